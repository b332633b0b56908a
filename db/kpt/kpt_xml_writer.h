// Every class of a database writes itself to a keypoint database file through
// this writer.
//
// Ownership: the writer owns its file from `start_file` until it is destroyed.
// The file is complete only then. Texts are read only during the call.
//
// The blanks of a file depend only on the sequence of calls: each operation
// changes the indentation level by fixed steps, and some helpers indent a line
// twice. Flows compare the files byte for byte, so these sequences must not
// change. Texts are written unchanged unless `escape_texts` was called.
#ifndef KPT_XML_WRITER_H
#define KPT_XML_WRITER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "db/kpt/kpt_types.h"

class KPT_STEPS;
class KPT_XML_STREAM;

class KPT_EXPORT KPT_XML_WRITER {
 public:
  /// Does not open the file; `start_file` does.
  explicit KPT_XML_WRITER(std::string_view file_name);
  ~KPT_XML_WRITER();
  KPT_XML_WRITER(const KPT_XML_WRITER&) = delete;
  KPT_XML_WRITER& operator=(const KPT_XML_WRITER&) = delete;

  /// From now on, attributes and texts of simple elements have references for
  /// characters that could not be read back: "<", "&", tabs and line ends,
  /// quotation marks, and ">" after "]]".
  void escape_texts() { m_escapes = true; }

  // All operations but `start_file` and `outdent` return true, also when the
  // file is not open or a write fails. What they write is then lost.

  /// Creates or truncates the file. False when it cannot be opened.
  bool start_file();

  /// One blank per level.
  bool space();
  bool indent();
  /// Two levels down. At a level below 2: false, and nothing changes.
  bool outdent();

  /// Indentation and "<name". Attributes may follow.
  bool start_tag(std::string_view name);
  bool write_attribute(std::string_view name, std::string_view value);
  /// ">" and a line end. This closes a start tag that has a line of its own.
  bool new_line();
  /// "> ", without a line end.
  bool close_tag();
  /// "</name>" one level down. At a level below 2 the writer cannot go down, but
  /// goes up again all the same, so the level is then 2 higher than before. The
  /// layout of the outermost elements depends on this.
  bool end_tag(std::string_view name);
  bool write_text_content(std::string_view text);
  /// "<name>text</name>" and a line end, without indentation.
  bool write_simple_text_element(std::string_view name, std::string_view text);
  bool write_empty_content_element(std::string_view name);

  bool write_db_start_xml(std::string_view db_name);
  /// A keypoint that has only a name.
  bool write_keypoint_xml(std::string_view id, std::string_view type, std::string_view name);
  /// A block instance. It indents after its start tag; the operation above
  /// indents before it.
  bool write_keypoint_xml(std::string_view id, std::string_view type, std::string_view name, std::string_view entity,
                          std::string_view reg_type);
  /// No attribute for an empty word.
  bool write_transformation_start_xml(std::string_view elim_type);
  bool write_tr_set_start_xml(std::string_view type);
  bool write_tr_state_start_xml(unsigned short index);
  // The ends of these elements: `space`, and `end_tag` with the element's name.
  bool write_tr_state_end_xml();
  bool write_tr_set_end_xml();
  bool write_transformation_end_xml();
  /// One group: `tag` around one "kp" element per id. `index` is not used.
  bool write_transformation_xml(std::string_view tag, unsigned short index, const KPT_ID_LIST& ids);
  bool write_state_index_xml(unsigned short index);
  bool write_state_table_xml(unsigned short index, std::string_view value);

  // The three steps of `write_transformation_xml`, for a caller that has
  // keypoints and would otherwise have to make a list of ids.
  bool begin_transformation_xml(std::string_view tag);
  bool write_kp_xml(long id);
  bool end_transformation_xml(std::string_view tag);

  /// From now on, registers and maps write their attributes. An attribute is an
  /// element without a type, which readers skip.
  void keep_attributes() { m_keeps_attributes = true; }
  bool keeps_attributes() const { return m_keeps_attributes; }
  /// Writes an "attribute" element for each attribute that is not empty. An
  /// absent attribute reads as empty.
  bool write_attributes(const KPT_ATTRIBUTE_LIST& attributes);
  /// The next key point is written with these attributes.
  void set_key_point_attributes(KPT_ATTRIBUTE_LIST attributes) { m_attributes = std::move(attributes); }

  /// From now on, counts the registers and maps that are written. `steps` outlives the writer.
  void count(KPT_STEPS& steps) { m_steps = &steps; }
  /// A register or map is written.
  void step();

  // For a file that must be complete or not exist. `start_file_on` takes an open
  // descriptor in place of `start_file`. `finish_file` writes everything to the
  // disk, closes the file, and returns whether every write succeeded.
  bool start_file_on(int descriptor);
  bool finish_file();

 private:
  // Puts the steps of one operation.
  class PEN;

  std::string_view escaped(std::string_view text);

  KPT_STRING m_file_name;
  std::unique_ptr<KPT_XML_STREAM> m_stream;
  std::uint16_t m_indent_level = 0;
  bool m_escapes = false;
  bool m_keeps_attributes = false;
  KPT_ATTRIBUTE_LIST m_attributes;  // for the next key point
  KPT_STRING m_number;              // the last number that was converted
  KPT_STRING m_escaped;             // the last text that needed references
  KPT_STEPS* m_steps = nullptr;
};

#endif
