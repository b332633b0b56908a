// How a database becomes a file.
#include <memory>
#include <new>

#include "db/kpt/files/kpt_file_replacement.h"
#include "db/kpt/files/kpt_held_text.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_xml_writer.h"
#include "db/kpt/msg_kpt.h"

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

void tell_of_texts(const char* file_name, const KPT_STRING& owner) {
  const std::unique_ptr<MSG_E> message(MSG_KPT::E::TEXTS_CANNOT_BE_SAVED(file_name, owner.c_str()));
  message->post();
}

bool register_can_be_held(const KPT_REGISTER_KEYPOINT_IMPL& k) {
  return kpt_file_can_hold(k.get_element_name()) &&
         (k.register_is_signal() ||
          (kpt_file_can_hold(k.get_entity_name()) && kpt_file_can_hold(k.get_register_type())));
}

bool set_can_be_held(const KPT_KEYPOINT_SET_IMPL& set, const char* file_name) {
  bool ok = true;
  set.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    ok = register_can_be_held(*k);
    if (!ok) {
      kpt_msg_debug("Error: register %s cannot be saved: a file cannot hold its name, entity or type",
                    k->get_element_name().c_str());
      tell_of_texts(file_name, "register " + k->get_element_name());
    }
    return ok;
  });
  return ok;
}

bool database_can_be_held(KPT_KEYPOINTS_DB_IMPL& db, const char* file_name) {
  const KPT_STRING& name = db.get_db_name();
  if (name.empty() || !kpt_file_can_hold(name)) {
    kpt_msg_debug("Error: database %s cannot be saved: a file cannot hold its name", name.c_str());
    tell_of_texts(file_name, "database " + name);
    return false;
  }
  return set_can_be_held(*db.get_reference_set(), file_name) && set_can_be_held(*db.get_transformed_set(), file_name);
}

bool replace_file(KPT_KEYPOINTS_DB_IMPL& db, const KPT_STRING& file_name) {
  KPT_FILE_REPLACEMENT file(file_name);
  KPT_XML_WRITER writer(file_name);
  writer.escape_texts();
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
    const KPT_STRING name(file_name);
    return database_can_be_held(*this, name.c_str()) && replace_file(*this, name);
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
    return false;
  }
}
