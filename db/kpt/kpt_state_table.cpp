#include "db/kpt/kpt_state_table.h"

#include <utility>

#include "db/kpt/kpt_state_table_impl.h"

KPT_STATE_TABLE::KPT_STATE_TABLE(unsigned short num_states, unsigned short num_reference_registers,
                                 unsigned short num_transformed_registers)
    : m_impl(new KPT_STATE_TABLE_IMPL(num_states, num_reference_registers, num_transformed_registers)) {}

KPT_STATE_TABLE::KPT_STATE_TABLE(KPT_STATE_TABLE_IMPL table) : m_impl(new KPT_STATE_TABLE_IMPL(std::move(table))) {}

KPT_STATE_TABLE::KPT_STATE_TABLE(const KPT_STATE_TABLE& other) : m_impl(new KPT_STATE_TABLE_IMPL(*other.m_impl)) {}

KPT_STATE_TABLE::~KPT_STATE_TABLE() = default;

bool KPT_STATE_TABLE::set_reference_entry(unsigned short row, unsigned short column, bool value) {
  return m_impl->set_reference_entry(row, column, value);
}

bool KPT_STATE_TABLE::set_transformed_entry(unsigned short row, unsigned short column, bool value) {
  return m_impl->set_transformed_entry(row, column, value);
}

int KPT_STATE_TABLE::get_reference_entry(unsigned short row, unsigned short column) const {
  return m_impl->get_reference_entry(row, column);
}

int KPT_STATE_TABLE::get_transformed_entry(unsigned short row, unsigned short column) const {
  return m_impl->get_transformed_entry(row, column);
}

unsigned short KPT_STATE_TABLE::get_state_reference_size() const { return m_impl->get_num_reference_registers(); }

unsigned short KPT_STATE_TABLE::get_state_transformed_size() const { return m_impl->get_num_transformed_registers(); }

unsigned short KPT_STATE_TABLE::get_number_of_states() const { return m_impl->get_num_states(); }

bool KPT_STATE_TABLE::is_in_canonical_form(KPT_SET_ENUM side) const { return m_impl->is_table_in_canonical_form(side); }
