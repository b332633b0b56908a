// Random operations on two keypoint sets. Each step is compared with plain lists:
// what is found, listed and counted, and the texts of every register that was
// made, also of those that have left their set.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "db/kpt/kpt_keypoint_set.h"
#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "tests/support/seed.h"

namespace {

struct MODEL_KEYPOINT {
  const KPT_REGISTER_KEYPOINT_IMPL* real;
  long id;
  bool is_signal;
  std::string name;
  std::string entity;
  std::string type;
  std::map<std::string, std::string> attributes;
  // The kind under which the set knows the keypoint. A renaming does not change it.
  bool among_signals;
  bool in_set = true;
  std::string key_name;
  std::string key_type;
};

// Every keypoint that was made, in order of creation.
struct MODEL_SET {
  const MODEL_KEYPOINT* find(bool among_signals, const std::string& name, const std::string& type) const {
    for (const MODEL_KEYPOINT& keypoint : all) {
      if (keypoint.in_set && keypoint.among_signals == among_signals && keypoint.key_name == name &&
          keypoint.key_type == type) {
        return &keypoint;
      }
    }
    return nullptr;
  }

  bool remove(bool among_signals, const std::string& name, const std::string& type) {
    auto* const keypoint = const_cast<MODEL_KEYPOINT*>(find(among_signals, name, type));
    if (keypoint == nullptr) {
      return false;
    }
    keypoint->in_set = false;
    keypoint->attributes.clear();
    return true;
  }

  void add(const KPT_REGISTER_KEYPOINT_IMPL* real, long id, const std::string& name) {
    remove(true, name, "");
    all.push_back({real, id, true, name, "", "", {}, true, true, name, ""});
  }

  void add(const KPT_REGISTER_KEYPOINT_IMPL* real, long id, const std::string& name, const std::string& entity,
           const std::string& type) {
    remove(false, name, type);
    all.push_back({real, id, false, name, entity, type, {}, false, true, name, type});
  }

  std::vector<const MODEL_KEYPOINT*> list() const {
    std::vector<const MODEL_KEYPOINT*> result;
    for (const bool among_signals : {true, false}) {
      for (const MODEL_KEYPOINT& keypoint : all) {
        if (keypoint.in_set && keypoint.among_signals == among_signals) {
          result.push_back(&keypoint);
        }
      }
    }
    return result;
  }

  std::vector<MODEL_KEYPOINT> all;
};

class KeypointSetModel : public testing::Test {
 protected:
  unsigned long below(unsigned long bound) { return m_random() % bound; }

  // A few texts, so that they coincide: short and long ones, pairs whose joined
  // texts are equal, and any bytes.
  std::string text() {
    static const std::string TEXTS[] = {
        "",
        "a",
        "b",
        "ab",
        "bc",
        "c",
        "abc",
        "A",
        "dff",
        "q",
        "\x80",
        "\xFF\x01",
        std::string("\0", 1),
        std::string("a\0b", 3),
        "a_rather_long_name_of_a_register_that_needs_a_block",
        "a_rather_long_name_of_a_register_that_needs_a_blocK",
    };
    return TEXTS[below(std::size(TEXTS))];
  }

  static KPT_REGISTER_KEYPOINT_IMPL* real(const MODEL_KEYPOINT& keypoint) {
    return const_cast<KPT_REGISTER_KEYPOINT_IMPL*>(keypoint.real);
  }

  static void check_keypoint(const MODEL_KEYPOINT& model) {
    const KPT_REGISTER_KEYPOINT_IMPL& keypoint = *model.real;
    ASSERT_EQ(keypoint.get_kpid(), model.id);
    ASSERT_EQ(std::string_view(keypoint.get_element_name()), model.name);
    ASSERT_EQ(std::string_view(keypoint.get_entity_name()), model.entity);
    ASSERT_EQ(std::string_view(keypoint.get_register_type()), model.type);
    ASSERT_EQ(keypoint.register_is_signal(), model.is_signal);
    ASSERT_EQ(keypoint.register_is_blockinstance(), !model.is_signal);
    for (const char* const name : {"", "clock"}) {
      const auto found = model.attributes.find(name);
      ASSERT_EQ(std::string_view(keypoint.get_attribute(name)),
                found == model.attributes.end() ? std::string() : found->second);
    }
  }

  static void check(KPT_KEYPOINT_SET_IMPL& set, MODEL_SET& model) {
    const std::vector<const MODEL_KEYPOINT*> expected = model.list();
    const KPT_KEYPOINT_LIST list = set.get_list_of_keypoints();
    ASSERT_EQ(list.size(), expected.size());
    ASSERT_EQ(set.size(), expected.size());
    ASSERT_EQ(set.is_empty(), expected.empty());
    std::map<long, const KPT_KEYPOINT*> by_id;
    for (std::size_t k = 0; k < expected.size(); ++k) {
      ASSERT_EQ(list[k], expected[k]->real) << "place " << k;
      by_id[expected[k]->id] = expected[k]->real;
    }
    const KPT_REGISTER_KEYPOINT_LIST handles = KPT_KEYPOINT_SET(&set).get_list_of_registers();
    ASSERT_EQ(handles.size(), expected.size());
    for (std::size_t k = 0; k < expected.size(); ++k) {
      ASSERT_EQ(&handles[k].get_name(), &expected[k]->real->get_element_name());
    }
    const KPT_ID_KEYPOINT_HASH ids = set.get_id_keypoint_hash();
    ASSERT_EQ(ids.size(), by_id.size());
    for (const auto& [id, keypoint] : by_id) {
      ASSERT_EQ(ids.at(id), keypoint);
    }
    for (const MODEL_KEYPOINT& keypoint : model.all) {
      check_keypoint(keypoint);
    }
    for (const MODEL_KEYPOINT* keypoint : expected) {
      const KPT_REGISTER_KEYPOINT_IMPL* const found =
          keypoint->among_signals ? set.get_register(keypoint->key_name)
                                  : set.get_register(keypoint->key_name, "any", keypoint->key_type);
      ASSERT_EQ(found, keypoint->real);
    }
  }

  void unite(KPT_KEYPOINT_SET_IMPL& set, MODEL_SET& model, KPT_KEYPOINT_SET_IMPL& other, const MODEL_SET& other_model) {
    long next_id = static_cast<long>(below(1000));
    long expected_id = next_id;
    std::vector<MODEL_KEYPOINT> walked;
    for (const MODEL_KEYPOINT* keypoint : other_model.list()) {
      walked.push_back(*keypoint);
    }
    ASSERT_TRUE(set.make_union(other, next_id));
    for (const MODEL_KEYPOINT& keypoint : walked) {
      if (keypoint.among_signals) {
        if (model.find(true, keypoint.name, "") == nullptr) {
          model.add(set.get_register(keypoint.name), ++expected_id, keypoint.name);
        }
      } else if (model.find(false, keypoint.name, keypoint.type) == nullptr) {
        model.add(set.get_register(keypoint.name, "", keypoint.type), ++expected_id, keypoint.name, keypoint.entity,
                  keypoint.type);
      }
    }
    ASSERT_EQ(next_id, expected_id);
  }

  // The choices of a step.
  struct CHOICE {
    std::string name;
    std::string entity;
    std::string type;
    long id;
    MODEL_KEYPOINT* any;  // one of all, also those that have left the set; null without one
  };

  void step(KPT_KEYPOINT_SET_IMPL& set, MODEL_SET& model, KPT_KEYPOINT_SET_IMPL& other, const MODEL_SET& other_model) {
    CHOICE choice{text(), text(), text(), static_cast<long>(below(200)) - 20, nullptr};
    if (!model.all.empty()) {
      choice.any = &model.all[below(model.all.size())];
    }
    const unsigned long operation = below(16);
    if (operation < 9) {
      change_or_search(operation, choice, set, model);
    } else if (operation == 15 && below(6) == 0) {
      unite(set, model, other, other_model);
    } else if (choice.any == nullptr) {
      return;
    } else if (operation < 12) {
      rename(operation, choice);
    } else if (operation == 12) {
      const MODEL_KEYPOINT copy = *choice.any;
      ASSERT_EQ(set.delete_namesake(*real(copy)), model.remove(copy.is_signal, copy.name, copy.type));
    } else if (operation == 13) {
      search_namesake(*choice.any, set, other, other_model);
    } else if (operation == 14) {
      change_attribute(choice);
    } else {
      check_copy(*choice.any);
    }
  }

  void change_or_search(unsigned long operation, const CHOICE& choice, KPT_KEYPOINT_SET_IMPL& set, MODEL_SET& model) {
    const auto& [name, entity, type, id, any] = choice;
    if (operation < 3) {
      model.add(set.add_register(id, name), id, name);
    } else if (operation < 6) {
      model.add(set.add_register(id, name, entity, type), id, name, entity, type);
    } else if (operation == 6) {
      ASSERT_EQ(set.delete_register(name), model.remove(true, name, ""));
    } else if (operation == 7) {
      ASSERT_EQ(set.delete_register(name, entity, type), model.remove(false, name, type));
    } else {
      const MODEL_KEYPOINT* const signal = model.find(true, name, "");
      ASSERT_EQ(set.get_register(name), signal == nullptr ? nullptr : signal->real);
      const MODEL_KEYPOINT* const instance = model.find(false, name, type);
      ASSERT_EQ(set.get_register(name, entity, type), instance == nullptr ? nullptr : instance->real);
      ASSERT_EQ(KPT_KEYPOINT_SET(&set).get_register(name).is_null(), signal == nullptr);
      ASSERT_EQ(KPT_KEYPOINT_SET(&set).get_register(name, entity, type).is_null(), instance == nullptr);
    }
  }

  static void rename(unsigned long operation, const CHOICE& choice) {
    MODEL_KEYPOINT& any = *choice.any;
    any.name = choice.name;
    if (operation == 9) {
      real(any)->set_element_name(choice.name);
    } else if (operation == 10) {
      ASSERT_TRUE(real(any)->substitute_with_signal(choice.name));
      if (!any.is_signal) {
        any.entity.clear();
        any.type.clear();
        any.is_signal = true;
      }
    } else {
      ASSERT_TRUE(real(any)->substitute_with_instance(choice.name, choice.entity, choice.type));
      any.entity = choice.entity;
      any.type = choice.type;
      any.is_signal = false;
    }
  }

  static void search_namesake(const MODEL_KEYPOINT& any, const KPT_KEYPOINT_SET_IMPL& set, KPT_KEYPOINT_SET_IMPL& other,
                              const MODEL_SET& other_model) {
    const MODEL_KEYPOINT* const namesake = other_model.find(any.is_signal, any.name, any.type);
    const KPT_REGISTER_KEYPOINT_IMPL* const expected = namesake == nullptr ? nullptr : namesake->real;
    other.fetch_namesakes_behind(*any.real, set);
    ASSERT_EQ(other.get_namesake(*any.real, set), expected);
    ASSERT_EQ(other.get_namesake(*any.real), expected);
  }

  void change_attribute(const CHOICE& choice) {
    MODEL_KEYPOINT& any = *choice.any;
    const std::string attribute = below(2) == 0 ? "clock" : "";
    if (below(2) == 0) {
      ASSERT_TRUE(real(any)->add_attribute(attribute, choice.name));
      any.attributes[attribute] = choice.name;
    } else {
      ASSERT_EQ(real(any)->remove_attribute(attribute), any.attributes.erase(attribute) == 1);
    }
  }

  static void check_copy(const MODEL_KEYPOINT& any) {
    MODEL_KEYPOINT copied = any;
    copied.attributes.clear();
    const KPT_REGISTER_KEYPOINT_IMPL copy(*any.real);
    ASSERT_FALSE(copy != *any.real);
    copied.real = &copy;
    check_keypoint(copied);
  }

  std::mt19937 m_random{kpt_test::seed()};
};

TEST_F(KeypointSetModel, EveryStepIsThatOfPlainLists) {
  SCOPED_TRACE("seed " + std::to_string(kpt_test::seed()));
  auto sets = std::make_unique<KPT_KEYPOINT_SET_IMPL[]>(2);
  MODEL_SET models[2];
  const int steps = kpt_test::steps(6000);
  for (int k = 0; k < steps; ++k) {
    SCOPED_TRACE("step " + std::to_string(k));
    const unsigned long which = below(2);
    const unsigned long other = below(8) == 0 ? which : 1 - which;
    step(sets[which], models[which], sets[other], models[other]);
    if (HasFatalFailure()) {
      return;
    }
    check(sets[which], models[which]);
    if (HasFatalFailure()) {
      return;
    }
    // Registers that have left are kept until the set is destroyed. The sets are
    // made anew before the lists of the model become slow.
    if (models[which].all.size() > 300) {
      sets = std::make_unique<KPT_KEYPOINT_SET_IMPL[]>(2);
      models[0].all.clear();
      models[1].all.clear();
    }
  }
}

// Hundreds of names, most of them with one hash: "aR" and "bA" have the same
// string hash, and so has every text that is made of the same number of them.
// They crowd at one position of the index, and beyond its end.
TEST(KeypointSetIndex, FindsWhatIsThereAmongNamesOfOneHashThatComeAndGo) {
  SCOPED_TRACE("seed " + std::to_string(kpt_test::seed()));
  std::mt19937 random(kpt_test::seed());
  std::vector<std::string> names;
  for (unsigned k = 0; k < 256; ++k) {
    std::string alike;
    for (unsigned bit = 0; bit < 8; ++bit) {
      alike += (k >> bit & 1U) != 0 ? "aR" : "bA";
    }
    names.push_back(alike);
    names.push_back("u_core/q_reg[" + std::to_string(k) + "]");
  }
  ASSERT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()(names[0]), STL_CASE_SENSITIVE_HASH_COMPARE()(names[2]));
  KPT_KEYPOINT_SET_IMPL set;
  std::map<std::string, const KPT_KEYPOINT*> model;
  const int steps = kpt_test::steps(20000);
  for (int k = 0; k < steps; ++k) {
    const std::string& name = names[random() % names.size()];
    const auto known = model.find(name);
    ASSERT_EQ(set.get_register(name), known == model.end() ? nullptr : known->second) << name;
    // The set grows and shrinks in turns.
    if (random() % 4 < (k / 1000 % 2 == 0 ? 3U : 1U)) {
      model[name] = set.add_register(k, name);
    } else {
      ASSERT_EQ(set.delete_register(name), model.erase(name) == 1) << name;
    }
    ASSERT_EQ(set.size(), model.size());
  }
  for (const std::string& name : names) {
    const auto known = model.find(name);
    EXPECT_EQ(set.get_register(name), known == model.end() ? nullptr : known->second) << name;
  }
}

}  // namespace
