// Writes a state table to a database file and reads it. In the file, states and
// columns count from 0.
#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_xml_element.h"
#include "db/kpt/kpt_xml_writer.h"
#include "db/kpt/msg_kpt.h"
#include "h/gen_sys.h"

bool KPT_STATE_TABLE_IMPL::save_state_table(KPT_XML_WRITER& writer) const {
  writer.start_tag(kpt_words::STATE_TABLE);
  writer.write_attribute(kpt_words::NUM_STATES, gen_itoa(m_num_rows, 10));
  writer.write_attribute(kpt_words::NUM_REFERENCE_REGISTERS, gen_itoa(m_num_r_columns, 10));
  writer.write_attribute(kpt_words::NUM_TRANSFORMED_REGISTERS, gen_itoa(m_num_t_columns, 10));
  writer.new_line();
  for (unsigned row = 0; row < m_num_rows; ++row) {
    writer.write_state_index_xml(static_cast<unsigned short>(row));
    save_side(writer, KPT_REFERENCE_SET, kpt_words::REFERENCE, row);
    save_side(writer, KPT_TRANSFORMED_SET, kpt_words::TRANSFORMED, row);
    writer.end_tag(kpt_words::STATE);
  }
  writer.end_tag(kpt_words::STATE_TABLE);
  return true;
}

// Every entry within the table's counts exists and is 0 or 1, so no other value
// can occur.
void KPT_STATE_TABLE_IMPL::save_side(KPT_XML_WRITER& writer, KPT_SET_ENUM set, const char* tag, unsigned row) const {
  writer.start_tag(tag);
  writer.new_line();
  const std::uint64_t start = std::uint64_t{row} * columns(set);
  for (unsigned column = 0; column < columns(set); ++column) {
    writer.write_state_table_xml(static_cast<unsigned short>(column), bits(set).get(start + column) ? "1" : "0");
  }
  writer.end_tag(tag);
}

bool KPT_STATE_TABLE_IMPL::make_table_entries(KPT_SET_ENUM side, KPT_XML_ELEMENT element, unsigned short state) {
  bool ok = true;
  KPT_XML_ELEMENT values = element.get_child_elements(kpt_words::VALUE, &ok);
  if (!ok) {
    kpt_msg_debug("Parse error while reading statetable column number");
  }
  bool accepted = true;
  const int count = values.size();
  for (int i = 0; i < count && accepted; ++i) {
    bool found = true;
    KPT_XML_ELEMENT value = values.item(i, &found);
    if (!found) {
      kpt_msg_debug("Parse error while reading statetable value");
      continue;
    }
    // The numbers of a file have any size: they are taken modulo 65,536.
    const auto column = static_cast<unsigned>(gen_atoi(value.get_attribute_by_name(kpt_words::INDEX)));
    const bool entry = static_cast<unsigned short>(gen_atoi(value.get_text_content())) == 1;
    accepted =
        set_entry(side, static_cast<unsigned short>(state + 1U), static_cast<unsigned short>(column + 1U), entry);
  }
  return accepted;
}
