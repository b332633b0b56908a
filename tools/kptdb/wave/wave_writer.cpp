#include "wave_writer.h"

#include <algorithm>

#include "../facts.h"
#include "../text.h"

namespace kptdb {

namespace {

constexpr std::size_t BLOCK = 1U << 16;

// Counted up in the printable characters, as simulators do it.
void append_code(std::string& text, std::uint32_t variable) {
  do {
    text += static_cast<char>('!' + variable % 94);
    variable /= 94;
  } while (variable-- > 0);
}

// A dump has no way to write a blank within a name.
std::string dump_word(std::string_view name) {
  std::string word = printable(name);
  std::replace(word.begin(), word.end(), ' ', '_');
  return word.empty() ? "_" : word;
}

struct NAMED_BIT {
  std::string_view path;  // with the divider at its end
  std::string_view base;
  std::int64_t index = 0;
  bool has_index = false;
  std::uint32_t bit = 0;
};

NAMED_BIT named_bit(const WAVE_NAME& name, char divider) {
  NAMED_BIT result;
  result.bit = name.bit;
  const std::size_t mark = name.name.rfind(divider);
  const std::size_t start = mark == std::string_view::npos ? 0 : mark + 1;
  result.path = name.name.substr(0, start);
  result.base = name.name.substr(start);
  if (const auto split = split_index(result.base)) {
    result.base = split->base;
    result.index = split->index;
    result.has_index = true;
  }
  return result;
}

bool comes_before(const NAMED_BIT& a, const NAMED_BIT& b) {
  return std::tie(a.path, a.base, a.has_index, b.index) < std::tie(b.path, b.base, b.has_index, a.index);
}

bool goes_on(const NAMED_BIT& left, const NAMED_BIT& right) {
  return left.has_index && right.has_index && left.path == right.path && left.base == right.base &&
         left.index == right.index + 1;
}

}  // namespace

// Opens and closes the scopes between one path and the next.
class WAVE_WRITER::SCOPES {
 public:
  SCOPES(WAVE_WRITER& writer, char divider) : m_writer(writer), m_divider(divider) {}

  void go_to(std::string_view path) {
    std::vector<std::string_view> wanted;
    while (!path.empty()) {
      const std::size_t end = std::min(path.find(m_divider), path.size() - 1);
      wanted.push_back(path.substr(0, end));
      path.remove_prefix(end + 1);
    }
    std::size_t same = 0;
    while (same < wanted.size() && same < m_open.size() && wanted[same] == m_open[same]) {
      ++same;
    }
    for (; m_open.size() > same; m_open.pop_back()) {
      m_writer.write("$upscope $end\n");
    }
    for (; m_open.size() < wanted.size(); m_open.push_back(wanted[m_open.size()])) {
      m_writer.write("$scope module " + dump_word(wanted[m_open.size()]) + " $end\n");
    }
  }

 private:
  WAVE_WRITER& m_writer;
  char m_divider;
  std::vector<std::string_view> m_open;
};

WAVE_WRITER::WAVE_WRITER(RESULT_FILE& out, std::size_t bits)
    : m_out(out), m_values(bits, 'x'), m_variable_of(bits, 0) {}

// The indices of a vector run down from left to right. A vector with a gap becomes several: what
// the database does not list has no value to show.
void WAVE_WRITER::write_header(std::vector<WAVE_NAME> names, const std::string& scope, const std::string& timescale,
                               char divider) {
  std::vector<NAMED_BIT> bits;
  bits.reserve(names.size());
  for (const WAVE_NAME& name : names) {
    bits.push_back(named_bit(name, divider));
  }
  std::stable_sort(bits.begin(), bits.end(), comes_before);
  write("$version kptdb wave $end\n$timescale " + (timescale.empty() ? "1 ns" : timescale) + " $end\n");
  SCOPES outer(*this, '.');
  outer.go_to(scope.empty() ? "" : scope + ".");
  SCOPES inner(*this, divider);
  for (std::size_t k = 0; k < bits.size();) {
    const auto number = static_cast<std::uint32_t>(m_variables.size());
    VARIABLE variable{static_cast<std::uint32_t>(m_bits.size()), 0, false};
    const std::size_t first = k;
    do {
      m_bits.push_back(bits[k].bit);
      m_variable_of[bits[k].bit] = number;
      ++variable.width;
      ++k;
    } while (k < bits.size() && goes_on(bits[k - 1], bits[k]));
    inner.go_to(bits[first].path);
    std::string line = "$var reg " + std::to_string(variable.width) + ' ';
    append_code(line, number);
    line += ' ' + dump_word(bits[first].base);
    if (bits[first].has_index) {
      line += " [" + std::to_string(bits[first].index);
      line += (variable.width > 1 ? ":" + std::to_string(bits[k - 1].index) : "") + "]";
    }
    write(line + " $end\n");
    m_variables.push_back(variable);
  }
  inner.go_to("");
  outer.go_to("");
  write("$enddefinitions $end\n");
}

void WAVE_WRITER::set(std::uint32_t bit, char value) {
  if (m_values[bit] == value) {
    return;
  }
  m_values[bit] = value;
  VARIABLE& variable = m_variables[m_variable_of[bit]];
  if (!variable.is_marked) {
    variable.is_marked = true;
    m_marked.push_back(m_variable_of[bit]);
  }
}

void WAVE_WRITER::end_step(std::uint64_t time, bool is_last) {
  if (!m_has_begun) {
    write("#" + std::to_string(time) + "\n$dumpvars\n");
    for (std::uint32_t k = 0; k < m_variables.size(); ++k) {
      write_value(k);
    }
    write("$end\n");
    m_has_begun = true;
    m_last_time = time;
  } else if (!m_marked.empty() || (is_last && time > m_last_time)) {
    m_text += '#';
    m_text += std::to_string(time);
    m_text += '\n';
    for (const std::uint32_t k : m_marked) {
      write_value(k);
    }
    m_last_time = time;
  }
  for (const std::uint32_t k : m_marked) {
    m_variables[k].is_marked = false;
  }
  m_marked.clear();
  if (is_last || m_text.size() >= BLOCK) {
    m_out.write(m_text);
    m_text.clear();
  }
}

void WAVE_WRITER::write_value(std::uint32_t k) {
  const VARIABLE& variable = m_variables[k];
  if (variable.width > 1) {
    m_text += 'b';
  }
  for (std::uint32_t bit = 0; bit < variable.width; ++bit) {
    m_text += m_values[m_bits[variable.first + bit]];
  }
  if (variable.width > 1) {
    m_text += ' ';
  }
  append_code(m_text, k);
  m_text += '\n';
}

void WAVE_WRITER::write(std::string_view text) {
  m_text += text;
  if (m_text.size() >= BLOCK) {
    m_out.write(m_text);
    m_text.clear();
  }
}

}  // namespace kptdb
