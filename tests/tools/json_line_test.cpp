// The writer of JSON lines, beside the library that writes trees.
#include "tools/kptdb/json_line.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <string>

namespace {

using kptdb::JSON_LINE;
using JSON = nlohmann::ordered_json;

std::string dumped(const JSON& json) { return json.dump(-1, ' ', false, JSON::error_handler_t::replace); }

TEST(JsonLine, WritesEveryByteAsTheLibraryDoes) {
  for (int c = 0; c < 256; ++c) {
    const std::string text = std::string("a") + static_cast<char>(c) + "z";
    JSON_LINE line;
    line.add(text);
    EXPECT_EQ(line.text(), dumped(JSON(text))) << c;
  }
}

TEST(JsonLine, WritesCharactersBeyondAsciiAsTheyAre) {
  JSON_LINE line(JSON_LINE::REFUSED);
  line.add("r\u00e9g \U0001F600");
  EXPECT_EQ(line.text(), "\"r\u00e9g \U0001F600\"");
}

TEST(JsonLine, MayRefuseWhatIsNotUtf8) {
  JSON_LINE line(JSON_LINE::REFUSED);
  EXPECT_THROW(line.add("\xff"), JSON::exception);
}

TEST(JsonLine, WritesEveryKindOfValue) {
  JSON_LINE line;
  line.open_object();
  line.add("text", "t");
  line.add("number", -12L);
  line.add("yes", true);
  line.add("no", false);
  line.add("nothing", nullptr);
  line.add_named("a \"name\"", "value");
  line.close_object();
  EXPECT_EQ(line.text(), R"({"text":"t","number":-12,"yes":true,"no":false,"nothing":null,"a \"name\"":"value"})");
}

TEST(JsonLine, IsUsedAgainAfterClear) {
  JSON_LINE line;
  line.add(1L);
  line.clear();
  line.add(2L);
  line.end_line();
  EXPECT_EQ(line.text(), "2\n");
}

// Writes a random value and returns it as a tree.
JSON put_any(JSON_LINE& line, std::mt19937& dice, unsigned depth) {
  const auto kind = dice() % (depth == 0 ? 2U : 4U);
  if (kind == 0) {
    line.add(static_cast<long>(dice()));
    return JSON::parse(line.text().substr(line.text().find_last_of("[:,") + 1));
  }
  if (kind == 1) {
    line.add("text");
    return "text";
  }
  JSON tree = kind == 2 ? JSON::array() : JSON::object();
  kind == 2 ? line.open_list() : line.open_object();
  const auto count = dice() % 4U;
  for (std::size_t k = 0; k < count; ++k) {
    if (kind == 2) {
      tree.push_back(put_any(line, dice, depth - 1));
    } else {
      const std::string name = "k" + std::to_string(k);
      line.key(name);
      tree[name] = put_any(line, dice, depth - 1);
    }
  }
  kind == 2 ? line.close_list() : line.close_object();
  return tree;
}

TEST(JsonLine, SeparatesValuesAtEveryDepth) {
  std::mt19937 dice(1);
  for (int round = 0; round < 300; ++round) {
    JSON_LINE line;
    const JSON tree = put_any(line, dice, 4);
    EXPECT_EQ(line.text(), tree.dump());
  }
}

}  // namespace
