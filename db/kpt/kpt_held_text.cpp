#include "db/kpt/kpt_held_text.h"

#include "db/kpt/files/kpt_plain_characters.h"

bool kpt_file_can_hold(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = kpt_plain::character_length(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}
