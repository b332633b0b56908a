// Databases of any shape are written as events and recorded again. Every question then has the same answer.
#include <algorithm>
#include <list>
#include <random>
#include <sstream>

#include "db/kpt/kpt.h"
#include "tests/support/seed.h"
#include "tool.h"

namespace {

constexpr KPT_SET_ENUM SIDES[] = {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET};

std::string text(const KPT_STRING& string) { return std::string(std::string_view(string)); }

std::string name_of(const KPT_REGISTER_KEYPOINT& reg) {
  if (reg.is_null()) {
    return "nothing";
  }
  return reg.is_signal() ? text(reg.get_name())
                         : text(reg.get_name()) + "(" + text(reg.get_entity_name()) + "," + text(reg.get_type()) + ")";
}

std::string attributes_of(const KPT_ATTRIBUTE_LIST& attributes) {
  std::string result;
  for (const auto& [name, value] : attributes) {
    result += " " + text(name) + "=" + text(value);
  }
  return result;
}

std::string table_of(const KPT_REGISTER_TRANSFORMATION& map) {
  const KPT_STATE_TABLE table = map.get_state_table();
  std::ostringstream out;
  out << table.get_number_of_states() << 'x' << table.get_state_reference_size() << 'x'
      << table.get_state_transformed_size() << ':';
  for (unsigned short row = 1; row <= table.get_number_of_states(); ++row) {
    for (unsigned short k = 1; k <= table.get_state_reference_size(); ++k) {
      out << table.get_reference_entry(row, k);
    }
    out << '|';
    for (unsigned short k = 1; k <= table.get_state_transformed_size(); ++k) {
      out << table.get_transformed_entry(row, k);
    }
    out << ' ';
  }
  return out.str();
}

// The answers to every question about a map.
std::string told(const KPT_REGISTER_TRANSFORMATION& map) {
  std::ostringstream out;
  out << map.get_elimination() << (map.has_fsm() ? " machine " : " ") << table_of(map);
  for (const KPT_SET_ENUM side : SIDES) {
    for (std::size_t index = 0; index < map.get_number_of_indices(side); ++index) {
      const auto k = static_cast<unsigned short>(index);
      out << "\n  " << (side == KPT_REFERENCE_SET ? "r" : "t") << k << " " << kpt_fate_word(map.get_fate(k));
      for (const bool inverted : {false, true}) {
        for (const KPT_REGISTER_KEYPOINT& reg : map.get_group(side, k, inverted)) {
          out << (inverted ? " ~" : " ") << name_of(reg);
        }
      }
      out << (map.is_positive_unate(k, 0) ? " +" : "") << (map.is_negative_unate(k, 0) ? " -" : "");
    }
  }
  out << attributes_of(map.get_attributes());
  return out.str();
}

// The map of every register, and then all maps in order.
std::string answers(const KPT_KEYPOINTS_DB& db) {
  std::vector<KPT_REGISTER_TRANSFORMATION> maps;
  std::string result = text(db.get_name());
  for (const KPT_REGISTER_TRANSFORMATION& map : db.get_transformation_set()) {
    maps.push_back(map);
    result += "\nmap " + told(map);
  }
  std::vector<std::string> lines;
  for (const KPT_SET_ENUM side : SIDES) {
    for (const KPT_REGISTER_KEYPOINT& reg : db.get_set(side)) {
      const auto at = std::find(maps.begin(), maps.end(), db.get_register_transformation(reg));
      lines.push_back((side == KPT_REFERENCE_SET ? "\nr " : "\nt ") + name_of(reg) + " in " +
                      std::to_string(at - maps.begin()) + attributes_of(reg.get_attributes()));
    }
  }
  std::sort(lines.begin(), lines.end());
  for (const std::string& line : lines) {
    result += line;
  }
  return result;
}

class EventsRoundTrip : public TOOL_TEST {
 protected:
  unsigned below(unsigned end) { return static_cast<unsigned>(random() % end); }

  // Mostly a new register; sometimes one that is already listed.
  KPT_REGISTER_NAME a_register() {
    const unsigned number = below(40) == 0 ? below(++m_names) : ++m_names;
    m_texts.push_back("n[" + std::to_string(number) + "]");
    return number % 5 == 0 ? KPT_REGISTER_NAME(m_texts.back(), "e", number % 2 == 0 ? "dff" : "latch")
                           : KPT_REGISTER_NAME(m_texts.back());
  }

  KPT_GROUPS_SIDE a_side(unsigned indices) {
    KPT_GROUPS_SIDE side;
    for (; indices > 0; --indices) {
      KPT_GROUPS& groups = side.emplace_back();
      for (unsigned k = below(4) == 0 ? below(4) : 1; k > 0; --k) {
        (below(3) == 0 ? groups.inverse : groups.same).push_back(a_register());
      }
    }
    return side;
  }

  void add_map(const KPT_KEYPOINTS_DB& db) {
    const bool is_machine = below(3) == 0;
    const bool is_odd = below(8) == 0;
    const KPT_GROUPS_SIDE r = a_side(is_machine || is_odd ? below(4) : 1);
    const KPT_GROUPS_SIDE t = a_side(is_machine || is_odd ? below(4) : 1);
    const auto more = static_cast<unsigned short>(is_odd ? below(2) : 0);
    KPT_STATE_TABLE table(static_cast<unsigned short>(below(5) + (is_odd ? 0 : 1)),
                          static_cast<unsigned short>(r.size() + more), static_cast<unsigned short>(t.size()));
    for (unsigned short row = 1; row <= table.get_number_of_states(); ++row) {
      for (unsigned short k = 1; k <= table.get_state_reference_size(); ++k) {
        table.set_reference_entry(row, k, below(2) == 1);
      }
      for (unsigned short k = 1; k <= table.get_state_transformed_size(); ++k) {
        table.set_transformed_entry(row, k, below(2) == 1);
      }
    }
    const auto status = static_cast<KPT_ELIM_ENUM>(below(4) == 0 ? below(5) : 0);
    const KPT_REGISTER_TRANSFORMATION map = db.add_groups_as_they_are(r, t, is_machine ? &table : nullptr, status);
    if (below(4) == 0) {
      map.add_attribute("pass", "opt, fsm");
      map.add_attribute(below(2) == 0 ? "partial" : "mine", "yes");
    }
  }

  std::mt19937 random{kpt_test::seed()};

 private:
  unsigned m_names = 0;
  std::list<std::string> m_texts;
};

TEST_F(EventsRoundTrip, AnswersEveryQuestionOfAnyDatabaseInTheSameWay) {
  const int rounds = kpt_test::steps(8);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const KPT_UNREGISTERED_DB made = KPT_UNREGISTERED_DB::create("any");
    for (unsigned k = 1 + below(80); k > 0; --k) {
      add_map(*made);
    }
    for (unsigned k = below(5); k > 0; --k) {
      const KPT_REGISTER_KEYPOINT alone =
          made->add_register_without_map(below(2) == 0 ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET, a_register());
      if (!alone.is_null()) {
        alone.add_attribute("note", "alone");
      }
    }
    const std::string file = (folder() / "any.xml").string();
    ASSERT_TRUE(made.save_atomically(file));
    good({"export", "--format", "events", "any.xml", "-o", "any.jsonl"});
    ASSERT_EQ(kptdb({"record", "--complete", "any.jsonl", "-o", "again.xml"}).exit_code, 0);  // tables may contradict
    const KPT_UNREGISTERED_DB saved = KPT_UNREGISTERED_DB::load(file);
    const KPT_UNREGISTERED_DB again = KPT_UNREGISTERED_DB::load((folder() / "again.xml").string());
    EXPECT_EQ(answers(*saved), answers(*again));
  }
}

// The first keypoint of the n group is not a register: the status and the table's column are about it.
TEST_F(EventsRoundTrip, SaysNoMoreOfAMapThatNamesIdsOfNoRegister) {
  record(
      "d.xml",
      R"({"event":"map","reference":[{"same":["a"],"inverse":["b"]}],"transformed":[{"same":["c"]}],"status":"stuck_at_one"})"
      "\n"
      R"({"event":"map","reference":[{"same":["p"],"inverse":["q"]}],"transformed":[{"same":["s"]}],"states":[["0","1"],["1","0"]]})"
      "\n"
      R"({"event":"map","reference":[{"same":["x"]}],"transformed":[{"same":["y"]}],"status":"no_fanout"})"
      "\n");
  std::string text = read("d.xml");
  for (const char* const id : {"<kp id=\"0\">", "<kp id=\"2\">"}) {
    text.replace(text.find(id), 8, "<kp id=\"77");
  }
  text.replace(text.rfind("<kp id=\"2\">"), 8, "<kp id=\"77");
  write("d.xml", text);
  const RUN_RESULT result = kptdb({"export", "--format", "events", "d.xml", "-o", "d.jsonl"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.err, "kptdb: warning: 3 places are left out where maps name ids of no register\n");
  good({"record", "d.jsonl", "-o", "again.xml"});
  const KPT_UNREGISTERED_DB again = KPT_UNREGISTERED_DB::load((folder() / "again.xml").string());
  const auto fate = [&](const char* name) {
    return std::string(kpt_fate_word(again->get_reference_register_transformation(name).get_fate(0)));
  };
  EXPECT_EQ(fate("b"), "mapped");
  EXPECT_EQ(fate("q"), "unknown");
  EXPECT_EQ(fate("x"), "unknown");
}

}  // namespace
