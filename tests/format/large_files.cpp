#include "tests/format/large_files.h"

#include <functional>

namespace kpt_test {

namespace {

// The texts of 0, 1, 2 and so on, joined, up to that many bytes.
std::string many(std::size_t size, const std::function<std::string(std::size_t)>& text) {
  std::string all;
  for (std::size_t k = 0; all.size() < size; ++k) {
    all += text(k);
  }
  return all;
}

std::string nested(std::size_t size, const std::string& start, const std::string& inner, const std::string& end) {
  const std::size_t count = size / (start.size() + end.size());
  std::string ends;
  for (std::size_t k = 0; k < count; ++k) {
    ends += end;
  }
  return many(count * start.size(), [&](std::size_t) { return start; }) + inner + ends;
}

std::string database(const std::string& content) { return "<kpt_db name=\"d\">" + content + "</kpt_db>"; }
std::string signal(std::size_t id, const std::string& name) {
  return "<key_point id=\"" + std::to_string(id) + "\" type=\"register\"><name>" + name + "</name></key_point>\n";
}
std::string references(const std::string& registers) {
  return "<key_points_set type=\"reference\">" + registers + "</key_points_set>";
}
std::string maps(const std::string& content) { return "<transformations_set>" + content + "</transformations_set>"; }
std::string table(const std::string& rows) {
  return maps(
      "<transformation><state_table num_states=\"65535\" num_reference_registers=\"65535\" "
      "num_transformed_registers=\"0\">" +
      rows + "</state_table></transformation>");
}
std::string row(std::size_t index, const std::string& values) {
  return "<state index=\"" + std::to_string(index) + "\"><reference>" + values + "</reference></state>";
}
std::string value(std::size_t index) { return "<value index=\"" + std::to_string(index) + "\">1</value>"; }

std::string numbered_signal(std::size_t k) { return signal(k, "r" + std::to_string(k)); }

// With the hash that clients use, all names of as many pairs of "aR" and "bA" are one.
std::string colliding_signal(std::size_t k) {
  std::string name;
  for (unsigned bit = 0; bit < 16; ++bit) {
    name += (k >> bit & 1U) != 0 ? "bA" : "aR";
  }
  return signal(k, name);
}

std::string one_map(std::size_t size) {
  const std::string group = many(size / 2, [](std::size_t k) { return "<kp id=\"" + std::to_string(k) + "\"/>"; });
  return references(many(size / 2, numbered_signal)) +
         maps("<transformation><kp_set type=\"reference\"><kp_state><noninverts>" + group +
              "</noninverts></kp_state></kp_set></transformation>");
}

std::string map_of(std::size_t k) {
  return "<transformation><kp_set type=\"reference\"><kp_state><inverts><kp id=\"" + std::to_string(k % 100) +
         "\"/></inverts></kp_state></kp_set></transformation>";
}

}  // namespace

std::vector<LARGE_FILE> large_files(std::size_t size) {
  const auto numbered = [](const char* before, const char* after) {
    return [=](std::size_t k) { return before + std::to_string(k) + after; };
  };
  return {
      {"registers", database(references(many(size, numbered_signal)))},
      {"names of one hash", database(references(many(size, colliding_signal)))},
      {"maps", database(references(many(5000, numbered_signal)) + maps(many(size, map_of)))},
      {"one map", database(one_map(size))},
      {"nested elements", database(nested(size, "<a>", "x", "</a>"))},
      {"nested in a name", database(references(signal(1, nested(size, "<a>", "x", "</a>"))))},
      {"nested values", database(table(row(0, nested(size, "<value index=\"0\">", "1", "</value>")))), false},
      {"rows", database(table(many(size, [](std::size_t k) { return row(k, value(0)); })))},
      {"values", database(table(row(0, many(size, value))))},
      {"element names", database("<b>" + many(size, numbered("<e", "/>")) + "</b>")},
      {"attribute names", database("<b>" + many(size, numbered("<e a", "=\"\"/>")) + "</b>")},
      {"attributes of one", "<b name=\"d\"" + many(size / 20, numbered(" a", "=\"\"")) + "/>"},
      {"a text", database(references(signal(1, std::string(size, 'x'))))},
      {"references", database(references(signal(1, many(size, [](std::size_t) { return "&amp;"; }))))},
      {"characters of two bytes", database(references(signal(1, many(size, [](std::size_t) { return "\xC3\xA9"; }))))},
      {"line ends", database(references(signal(1, many(size, [](std::size_t) { return "\r\n\r"; }))))},
      {"elements behind the maps", database(maps("") + many(size, [](std::size_t) { return "<b/>"; }))},
      {"comments", database(many(size, [](std::size_t) { return "<!---->"; }))},
  };
}

}  // namespace kpt_test
