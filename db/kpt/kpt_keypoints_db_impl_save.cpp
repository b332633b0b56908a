// Saves a database to a file.
#include <algorithm>
#include <memory>
#include <new>

#include "db/kpt/files/kpt_file_replacement.h"
#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/files/kpt_plain_characters.h"
#include "db/kpt/kpt_held_text.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_steps.h"
#include "db/kpt/kpt_xml_writer.h"
#include "db/kpt/msg_kpt.h"

namespace {

// When a part fails, the later parts are left out, but the root is closed in any case.
bool write_database(KPT_KEYPOINTS_DB_IMPL& db, KPT_XML_WRITER& writer) {
  writer.write_db_start_xml(db.get_db_name());
  const bool saved = db.get_reference_set()->save_keypoint_set(KPT_REFERENCE_SET, writer) &&
                     db.get_transformed_set()->save_keypoint_set(KPT_TRANSFORMED_SET, writer) &&
                     db.get_transformation_set()->save_transformation_set(writer);
  writer.end_tag(kpt_words::KPT_DB);
  return saved;
}

// A name that no file can hold may have characters that a log cannot show.
KPT_STRING shown(std::string_view text) {
  KPT_STRING result;
  while (!text.empty()) {
    const std::size_t length = std::max<std::size_t>(kpt_plain::character_length(text), 1);
    const auto byte = static_cast<unsigned char>(text.front());
    if (byte < ' ' || byte == 0x7F || (byte >= 0x80 && length == 1)) {
      constexpr std::string_view DIGITS = "0123456789ABCDEF";
      result += {'\\', 'x', DIGITS[byte / 16U], DIGITS[byte % 16U]};
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return result;
}

// Searches for a text that no file can hold, and reports the first one.
class TEXT_CHECK {
 public:
  explicit TEXT_CHECK(std::string_view file_name) : m_file_name(file_name) {}

  bool database(KPT_KEYPOINTS_DB_IMPL& db) const {
    const KPT_STRING& name = db.get_db_name();
    if (name.empty() || !kpt_file_can_hold(name)) {
      kpt_msg_debug("Error: database %s cannot be saved: a file cannot hold its name", shown(name).c_str());
      return refuse("database ", name);
    }
    const KPT_TRANSFORMATION_LIST& maps = db.get_transformation_set()->get_list_of_register_transformations();
    return set(*db.get_reference_set()) && set(*db.get_transformed_set()) &&
           std::all_of(maps.begin(), maps.end(), [&](const KPT_TRANSFORMATION_IMPL* m) { return map(*m); });
  }

 private:
  bool refuse(std::string_view what, std::string_view name) const {
    const KPT_STRING owner = KPT_STRING(what) + shown(name);
    const std::unique_ptr<MSG_E> message(MSG_KPT::E::TEXTS_CANNOT_BE_SAVED(m_file_name.c_str(), owner.c_str()));
    message->post();
    return false;
  }

  bool set(const KPT_KEYPOINT_SET_IMPL& set) const {
    bool ok = true;
    set.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) { return ok = keypoint(*k); });
    return ok;
  }

  bool keypoint(const KPT_REGISTER_KEYPOINT_IMPL& k) const {
    const KPT_STRING& name = k.get_element_name();
    const bool is_held = kpt_file_can_hold(name) &&
                         (k.register_is_signal() ||
                          (kpt_file_can_hold(k.get_entity_name()) && kpt_file_can_hold(k.get_register_type())));
    if (!is_held) {
      kpt_msg_debug("Error: register %s cannot be saved: a file cannot hold its name, entity or type",
                    shown(name).c_str());
    }
    return is_held && attributes(k.attributes()) ? true : refuse("register ", name);
  }

  bool map(const KPT_TRANSFORMATION_IMPL& m) const {
    if (attributes(m.attributes())) {
      return true;
    }
    const KPT_KEYPOINT* const r = m.get_r_representative(0);
    const KPT_KEYPOINT* const k = r != nullptr ? r : m.get_t_representative(0);
    return k != nullptr ? refuse("the map of ", k->get_element_name()) : refuse("a map without registers", {});
  }

  static bool attributes(const KPT_ATTRIBUTES& attributes) {
    if (attributes.empty()) {
      return true;
    }
    const KPT_ATTRIBUTE_LIST all = attributes.sorted();
    return std::all_of(all.begin(), all.end(), [](const auto& attribute) {
      const bool is_held = kpt_file_can_hold(attribute.first) && kpt_file_can_hold(attribute.second);
      if (!is_held) {
        kpt_msg_debug("Error: attribute %s cannot be saved: a file cannot hold its name or value",
                      shown(attribute.first).c_str());
      }
      return is_held;
    });
  }

  KPT_STRING m_file_name;
};

// The file is in its place by now, so the message alone may be lost.
void tell_of_owner(const KPT_STRING& file_name) {
  try {
    const std::unique_ptr<MSG_E> message(MSG_KPT::E::OWNER_NOT_KEPT(file_name.c_str()));
    message->post();
  } catch (const std::bad_alloc&) {
    // There is nothing that could still be told.
  }
}

// What a save passes.
std::size_t registers_and_maps(KPT_KEYPOINTS_DB_IMPL& db) {
  return db.get_reference_set()->size() + db.get_transformed_set()->size() +
         db.get_transformation_set()->get_list_of_register_transformations().size();
}

bool replace_file(KPT_KEYPOINTS_DB_IMPL& db, const KPT_STRING& file_name, KPT_PROGRESS* progress) {
  KPT_STEPS steps(progress, registers_and_maps(db));
  steps.begin(registers_and_maps(db));
  KPT_FILE_REPLACEMENT file(file_name);
  KPT_XML_WRITER writer(file_name);
  writer.keep_attributes();
  writer.escape_texts();
  writer.count(steps);
  bool saved = writer.start_file_on(file.open()) && write_database(db, writer);
  saved = writer.finish_file() && saved && file.replace_target();
  if (!saved) {
    kpt_msg_debug("Error: cannot write %s", file_name.c_str());
    return false;
  }
  if (!file.keeps_owner()) {
    tell_of_owner(file_name);
  }
  steps.finish();
  return true;
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

bool KPT_KEYPOINTS_DB_IMPL::save_atomically(std::string_view file_name, KPT_PROGRESS* progress) {
  try {
    return TEXT_CHECK(file_name).database(*this) && replace_file(*this, KPT_STRING(file_name), progress);
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
    return false;
  }
}
