// export: Tcl arrays, for scripts of timing and layout programs.
#include <fmt/format.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include "export_facts.h"
#include "progress.h"
#include "text.h"

namespace kptdb {

namespace {

constexpr std::string_view HEADER = R"(# What became of the registers, by their names in the source.
#   kpt::pin(NAME)       the pin of the netlist that carries its value or the inverse
#   kpt::net(NAME)       the net that does, for a register that is known by its net
#   kpt::sense(NAME)     same or inverse
#   kpt::copies(NAME)    where there are several: a list of pin or net, name and sense
#   kpt::constant(NAME)  0 or 1
#   kpt::fsm(NAME)       a register of a state machine: its number and the column, from 0
#   kpt::machine(NUMBER) a dictionary: reference (names), transformed (kind and name of each
#                        column's register, and its sense), codes (pairs)
namespace eval ::kpt {
  foreach array {pin net sense copies constant fsm machine} {
    variable $array
    array unset $array
    array set $array {}
  }
}
)";

void append_code_point(std::string& text, unsigned code) { text += fmt::format("\\u{:04x}", code); }

// The code point at a byte, if it is UTF-8 and short enough for Tcl's \u.
struct CODE_POINT {
  unsigned code = 0;
  std::size_t size = 0;
};

CODE_POINT code_point_at(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t k) {
    return at + k < text.size() ? static_cast<unsigned>(static_cast<unsigned char>(text[at + k])) : 0U;
  };
  const auto follows = [&](std::size_t k) { return (byte(k) & 0xC0U) == 0x80U; };
  if ((byte(0) & 0xE0U) == 0xC0U && follows(1)) {
    return {((byte(0) & 0x1FU) << 6U) | (byte(1) & 0x3FU), 2};
  }
  if ((byte(0) & 0xF0U) == 0xE0U && follows(1) && follows(2)) {
    return {((byte(0) & 0x0FU) << 12U) | ((byte(1) & 0x3FU) << 6U) | (byte(2) & 0x3FU), 3};
  }
  return {byte(0), 1};
}

// A word that Tcl reads as the text, both in a command and in a list.
std::string word(std::string_view text) {
  if (text.empty()) {
    return "{}";
  }
  std::string result;
  for (std::size_t k = 0; k < text.size();) {
    const auto c = static_cast<unsigned char>(text[k]);
    const bool is_plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
                          c == '.' || c == '/' || c == ':' || c == '-';
    if (is_plain) {
      result += text[k++];
    } else if (c > ' ' && c <= '~') {
      result += '\\';
      result += text[k++];
    } else {
      const CODE_POINT point = code_point_at(text, k);
      append_code_point(result, point.code);
      k += point.size;
    }
  }
  return result;
}

// A pin as timing programs name it: the instance, a slash, the pin.
std::string object_of(const KPT_REGISTER_KEYPOINT& reg) { return name_in_netlist(reg, '/'); }

std::string_view kind_of(const KPT_REGISTER_KEYPOINT& reg) { return reg.is_block_instance() ? "pin" : "net"; }

std::string_view sense_of(bool inverse) { return inverse ? "inverse" : "same"; }

void set(RESULT_FILE& out, std::string_view array, const std::string& key, std::string_view value) {
  out.write(fmt::format("set ::kpt::{}({}) {}\n", array, key, value));
}

void write_copies(const FACTS& facts, const SUBJECT& subject, const std::string& key, RESULT_FILE& out) {
  std::string copies;
  std::size_t count = 0;
  facts.for_each_copy(subject, [&](const FACT_MEMBER& copy, bool inverse) {
    const std::string object = word(object_of(copy.reg));
    if (count++ == 0) {
      set(out, kind_of(copy.reg), key, object);
      set(out, "sense", key, sense_of(inverse));
    }
    copies += fmt::format(" [list {} {} {}]", kind_of(copy.reg), object, sense_of(inverse));
  });
  if (count > 1) {
    set(out, "copies", key, "[list" + copies + "]");
  }
}

void write_machine(const FACTS& facts, const FACT& fact, std::size_t number, RESULT_FILE& out) {
  std::string reference;
  std::string transformed;
  for (std::uint32_t k = fact.first_member; k < fact.end_member; ++k) {
    const FACT_MEMBER& member = facts.member(k);
    const bool is_first = k == fact.first_member || facts.member(k - 1).column != member.column ||
                          facts.member(k - 1).transformed != member.transformed;
    if (is_first && member.transformed) {
      transformed +=
          fmt::format(" [list {} {} {}]", kind_of(member.reg), word(object_of(member.reg)), sense_of(member.inverse));
    } else if (is_first) {
      reference += " " + word(name_in_netlist(member.reg, '.'));
    }
  }
  std::string codes;
  for (const auto& [r, t] : facts.codes_of(fact)) {
    codes += fmt::format(" {{{} {}}}", r, t);
  }
  set(out, "machine", std::to_string(number),
      fmt::format("[dict create reference [list{}] transformed [list{}] codes [list{}]]", reference, transformed,
                  codes));
}

}  // namespace

void export_tcl(const FACTS& facts, RESULT_FILE& out) {
  out.write(HEADER);
  boost::unordered_flat_map<std::uint32_t, std::size_t> machines;  // by fact
  PROGRESS progress("exporting", facts.subjects().size(), PROGRESS::REGISTERS);
  std::uint64_t done = 0;
  for (const SUBJECT& subject : facts.subjects()) {
    progress.at(++done);
    const std::string key = word(name_in_netlist(subject.reg, '.'));
    if (const auto constant = facts.constant_of(subject)) {
      set(out, "constant", key, *constant ? "1" : "0");
    }
    if (facts.fact_of(subject).kind != MACHINE_FACT) {
      write_copies(facts, subject, key, out);
      continue;
    }
    const auto [found, is_new] = machines.try_emplace(subject.fact, machines.size());
    if (is_new) {
      write_machine(facts, facts.fact_of(subject), found->second, out);
    }
    set(out, "fsm", key, fmt::format("{{{} {}}}", found->second, facts.member(subject.member).column));
  }
}

}  // namespace kptdb
