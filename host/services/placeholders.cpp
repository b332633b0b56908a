#include <array>
#include <charconv>
#include <string_view>

#include "h/gen_sys.h"
#include "host/services/text.h"

namespace {

constexpr unsigned int LAST_ARGUMENT = 99;

struct PLACEHOLDER {
  unsigned int m_argument = 0;
  char m_kind = '\0';
  std::size_t m_length = 0;  // 0: no placeholder here
};

struct ARGUMENT {
  char m_kind = '\0';  // no kind when the argument is not reached
  MEM_STRING m_value;
};

using ARGUMENTS = std::array<ARGUMENT, LAST_ARGUMENT + 1>;

// The placeholder at the start of `text`: "%", a number from 1, "!", "s" or "d", "!".
PLACEHOLDER placeholder_at(std::string_view text) {
  if (text.empty() || text.front() != '%') {
    return {};
  }
  unsigned int argument = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data() + 1, last, argument);
  if (error != std::errc() || argument < 1 || argument > LAST_ARGUMENT) {
    return {};
  }
  const std::string_view tail = text.substr(static_cast<std::size_t>(end - text.data()), 3);
  if (tail != "!s!" && tail != "!d!") {
    return {};
  }
  return {argument, tail[1], text.size() - static_cast<std::size_t>(last - end) + 3};
}

// Calls `literal` with every character and `placeholder` with every placeholder, in order.
template <class LITERAL, class FOUND>
void walk(std::string_view text, LITERAL literal, FOUND placeholder) {
  while (!text.empty()) {
    const PLACEHOLDER found = placeholder_at(text);
    if (found.m_length == 0) {
      literal(text.front());
      text.remove_prefix(1);
    } else {
      placeholder(found, text.substr(0, found.m_length));
      text.remove_prefix(found.m_length);
    }
  }
}

void find_kinds(std::string_view text, ARGUMENTS& arguments) {
  const auto ignore = [](char) {};
  walk(text, ignore, [&arguments](const PLACEHOLDER& found, std::string_view) {
    char& kind = arguments[found.m_argument].m_kind;
    kind = kind == '\0' ? found.m_kind : kind;
  });
}

MEM_STRING string_value(const char* value) { return value != nullptr ? value : ""; }

// Reads arguments up to the first whose kind is unknown; those after it are marked as not reached.
void read_values(ARGUMENTS& arguments, va_list args) {
  bool reached = true;
  for (std::size_t n = 1; n < arguments.size(); ++n) {
    ARGUMENT& argument = arguments[n];
    reached = reached && argument.m_kind != '\0';
    if (!reached) {
      argument.m_kind = '\0';
    } else if (argument.m_kind == 's') {
      argument.m_value = string_value(va_arg(args, const char*));
    } else {
      argument.m_value = gen_itoa(va_arg(args, int), 10);
    }
  }
}

}  // namespace

MEM_STRING kpt_services::filled(const MEM_STRING& text, va_list args) {
  ARGUMENTS arguments;
  find_kinds(text, arguments);
  read_values(arguments, args);
  MEM_STRING result;
  const auto copy = [&result](char c) { result += c; };
  walk(text, copy, [&](const PLACEHOLDER& found, std::string_view spelling) {
    const ARGUMENT& argument = arguments[found.m_argument];
    result += found.m_kind == argument.m_kind ? std::string_view(argument.m_value) : spelling;
  });
  return result;
}
