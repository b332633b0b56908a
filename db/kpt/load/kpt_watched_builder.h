// The builder of a load, and a visitor that gets the same elements.
//
// Ownership: none.
#ifndef KPT_WATCHED_BUILDER_H
#define KPT_WATCHED_BUILDER_H

#include "db/kpt/kpt_file_visitor.h"
#include "db/kpt/load/kpt_database_builder.h"

class KPT_WATCHED_BUILDER {
 public:
  /// Either may be null.
  KPT_WATCHED_BUILDER(KPT_DATABASE_BUILDER* builder, KPT_FILE_VISITOR* visitor)
      : m_builder(builder), m_visitor(visitor) {}

  /// The line of the next elements.
  void set_line(std::size_t line) { m_line = line; }
  bool wants_text() const { return m_visitor != nullptr || (m_builder != nullptr && m_builder->wants_text()); }

  void start(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes) {
    if (m_builder != nullptr) {
      m_builder->start(name, attributes);
    }
    if (m_visitor != nullptr) {
      m_visitor->start(name, attributes, m_line);
    }
  }
  void end() {
    if (m_builder != nullptr) {
      m_builder->end();
    }
    if (m_visitor != nullptr) {
      m_visitor->end(m_line);
    }
  }
  void text(std::string_view piece) {
    if (m_builder != nullptr) {
      m_builder->text(piece);
    }
    if (m_visitor != nullptr) {
      m_visitor->text(piece);
    }
  }
  void start_reference(std::string_view name) {
    if (m_builder != nullptr) {
      m_builder->start_reference(name);
    }
    if (m_visitor != nullptr) {
      m_visitor->start_reference();
    }
  }
  void end_reference() {
    if (m_builder != nullptr) {
      m_builder->end_reference();
    }
    if (m_visitor != nullptr) {
      m_visitor->end_reference();
    }
  }
  void instruction(std::string_view target, std::string_view data) {
    if (m_builder != nullptr) {
      m_builder->instruction(target, data);
    }
  }

 private:
  KPT_DATABASE_BUILDER* m_builder;
  KPT_FILE_VISITOR* m_visitor;
  std::size_t m_line = 1;
};

#endif
