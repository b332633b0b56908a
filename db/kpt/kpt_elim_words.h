// The words by which a database file says why the registers of a map were eliminated.
//
// Ownership: none.
#ifndef KPT_ELIM_WORDS_H
#define KPT_ELIM_WORDS_H

#include <array>
#include <string_view>

#include "db/kpt/kpt_types.h"

/// Indexed by KPT_ELIM_ENUM.
inline constexpr std::array<std::string_view, 5> KPT_ELIM_WORDS{"not_eliminated", "stuck_at_zero", "stuck_at_one",
                                                                "no_fanout", "eliminated"};

/// Empty for a value outside the list.
constexpr std::string_view kpt_elim_word(KPT_ELIM_ENUM status) {
  const auto index = static_cast<unsigned>(status);
  return index < KPT_ELIM_WORDS.size() ? KPT_ELIM_WORDS[index] : std::string_view();
}

/// A word that is not in the list means not eliminated.
constexpr KPT_ELIM_ENUM kpt_elim_status(std::string_view word) {
  for (unsigned index = 0; index < KPT_ELIM_WORDS.size(); ++index) {
    if (KPT_ELIM_WORDS[index] == word) {
      return static_cast<KPT_ELIM_ENUM>(index);
    }
  }
  return KPT_NOT_ELIMINATED;
}

#endif
