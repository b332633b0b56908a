#include "handles.h"

#include "errors.h"

namespace kpt_python {

namespace {

std::string_view view(const KPT_STRING& text) { return text; }

KPT_REGISTER_KEYPOINT namesake(const KPT_KEYPOINTS_DB& db, const KPT_REGISTER_KEYPOINT& keypoint) {
  const KPT_KEYPOINT_SET set = db.get_set(side_of(keypoint));
  return keypoint.is_signal() ? set.get_register(keypoint.get_name())
                              : set.get_register(keypoint.get_name(), keypoint.get_entity_name(), keypoint.get_type());
}

}  // namespace

bool REGISTER::is_present() const { return namesake(db->use(), keypoint) == keypoint; }

KPT_REGISTER_TRANSFORMATION MAP::get() const {
  const KPT_REGISTER_TRANSFORMATION map = db->use().get_transformation_set().get_map(number);
  if (map.is_null()) {
    raise_gone("map " + std::to_string(number) + " is gone: it was absorbed or deleted");
  }
  return map;
}

MAP seen_from_first(const SHARED_DATABASE& db, const KPT_REGISTER_TRANSFORMATION& map) {
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    const std::size_t end = map.get_number_of_indices(side);
    for (std::size_t index = 0; index < end; ++index) {
      for (const bool inverted : {false, true}) {
        for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_group(side, index, inverted)) {
          if (!keypoint.is_null()) {
            return {db, map.get_number(), keypoint, side};
          }
        }
      }
    }
  }
  return {db, map.get_number(), KPT_REGISTER_KEYPOINT()};
}

std::string label(const KPT_REGISTER_KEYPOINT& keypoint) {
  std::string text(view(keypoint.get_name()));
  if (keypoint.is_block_instance()) {
    text.append(" (").append(view(keypoint.get_entity_name())).append(", ");
    text.append(view(keypoint.get_type())).append(")");
  }
  return text;
}

}  // namespace kpt_python
