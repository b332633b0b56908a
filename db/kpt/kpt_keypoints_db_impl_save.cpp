// How a database becomes a file.
#include <algorithm>
#include <new>

#include "db/kpt/files/kpt_file_replacement.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_xml_writer.h"
#include "db/kpt/msg_kpt.h"
#include "h/gen_sys.h"

namespace {

// A part is left out once one before it failed, but the root is always closed.
bool write_database(KPT_KEYPOINTS_DB_IMPL& db, KPT_XML_WRITER& writer) {
  writer.write_db_start_xml(db.get_db_name());
  const bool saved = db.get_reference_set()->save_keypoint_set(KPT_REFERENCE_SET, writer) &&
                     db.get_transformed_set()->save_keypoint_set(KPT_TRANSFORMED_SET, writer) &&
                     db.get_transformation_set()->save_transformation_set(writer);
  writer.end_tag("kpt_db");
  return saved;
}

// Whether the text comes back from a file as it is: nothing is escaped, and
// the parser's narrow characters are only sure to hold ASCII.
bool reads_back(std::string_view text) {
  const auto plain = [](char c) { return c >= 0x20 && c <= 0x7E && c != '<' && c != '&' && c != '"'; };
  return std::all_of(text.begin(), text.end(), plain) && text.find("]]>") == std::string_view::npos;
}

bool attributes_read_back(const KPT_ATTRIBUTES& attributes) {
  if (attributes.empty()) {
    return true;
  }
  const KPT_ATTRIBUTE_LIST all = attributes.sorted();
  return std::all_of(all.begin(), all.end(), [](const auto& attribute) {
    const bool ok = reads_back(attribute.first) && reads_back(attribute.second);
    if (!ok) {
      kpt_msg_debug("Error: attribute %s cannot be saved: a file cannot hold its name or value",
                    attribute.first.c_str());
    }
    return ok;
  });
}

bool register_reads_back(const KPT_REGISTER_KEYPOINT_IMPL& k) {
  const bool ok = reads_back(k.get_element_name()) &&
                  (k.register_is_signal() || (reads_back(k.get_entity_name()) && reads_back(k.get_register_type())));
  if (!ok) {
    kpt_msg_debug("Error: register %s cannot be saved: a file cannot hold its name, entity or type",
                  k.get_element_name().c_str());
  }
  return ok && attributes_read_back(k.attributes());
}

bool set_reads_back(const KPT_KEYPOINT_SET_IMPL& set) {
  bool ok = true;
  set.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) { return ok = register_reads_back(*k); });
  return ok;
}

bool database_reads_back(KPT_KEYPOINTS_DB_IMPL& db) {
  const KPT_STRING& name = db.get_db_name();
  if (name.empty() || !reads_back(name)) {
    kpt_msg_debug("Error: database %s cannot be saved: a file cannot hold its name", name.c_str());
    return false;
  }
  const KPT_TRANSFORMATION_LIST& maps = db.get_transformation_set()->get_list_of_register_transformations();
  return set_reads_back(*db.get_reference_set()) && set_reads_back(*db.get_transformed_set()) &&
         std::all_of(maps.begin(), maps.end(),
                     [](const KPT_TRANSFORMATION_IMPL* map) { return attributes_read_back(map->attributes()); });
}

bool replace_file(KPT_KEYPOINTS_DB_IMPL& db, const KPT_STRING& file_name) {
  KPT_FILE_REPLACEMENT file(file_name);
  KPT_XML_WRITER writer(file_name);
  writer.keep_attributes();
  bool saved = writer.start_file_on(file.open()) && write_database(db, writer);
  saved = writer.finish_file() && saved && file.replace_target();
  if (!saved) {
    kpt_msg_debug("Error: cannot write %s", file_name.c_str());
  }
  return saved;
}

}  // namespace

bool KPT_KEYPOINTS_DB_IMPL::save(std::string_view file_name) {
  try {
    KPT_XML_WRITER writer(file_name);
    return writer.start_file() && write_database(*this, writer);
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
    return false;
  }
}

bool KPT_KEYPOINTS_DB_IMPL::save_atomically(std::string_view file_name) {
  try {
    return database_reads_back(*this) && replace_file(*this, KPT_STRING(file_name));
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
    return false;
  }
}
