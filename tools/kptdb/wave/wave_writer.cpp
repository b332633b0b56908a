#include "wave_writer.h"

#include <algorithm>

#include "../text.h"
#include "buses.h"

namespace kptdb {

namespace {

constexpr std::size_t BLOCK = 1U << 16;

// Codes count up in the printable characters, as in simulators.
void append_code(std::string& text, std::uint32_t variable) {
  do {
    text += static_cast<char>('!' + variable % 94);
    variable /= 94;
  } while (variable-- > 0);
}

// A dump cannot have a blank within a name.
std::string dump_word(std::string_view name) {
  std::string word = printable(name);
  std::replace(word.begin(), word.end(), ' ', '_');
  return word.empty() ? "_" : word;
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

void WAVE_WRITER::write_header(const std::vector<std::string_view>& names, const std::string& scope,
                               const std::string& timescale, char divider) {
  write("$version kptdb wave $end\n$timescale " + (timescale.empty() ? "1 ns" : timescale) + " $end\n");
  SCOPES outer(*this, '.');
  outer.go_to(scope.empty() ? "" : scope + ".");
  SCOPES inner(*this, divider);
  for (const BUS& bus : join_buses(names, divider)) {
    const auto number = static_cast<std::uint32_t>(m_variables.size());
    inner.go_to(bus.path);
    std::string line = "$var reg " + std::to_string(bus.bits.size()) + ' ';
    append_code(line, number);
    line += ' ' + dump_word(bus.base) + (bus.has_index ? " " + bus.range() : "");
    write(line + " $end\n");
    m_variables.push_back({static_cast<std::uint32_t>(m_bits.size()), static_cast<std::uint32_t>(bus.bits.size())});
    for (const std::uint32_t bit : bus.bits) {
      m_bits.push_back(bit);
      m_variable_of[bit] = number;
    }
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
