// A second model of a database, over standard containers and without regard to
// speed: registers, maps and the two indexes.
//
// Ownership: a MODEL owns its maps; the caller owns the registers.
#ifndef TESTS_UNION_PLAIN_MODEL_H
#define TESTS_UNION_PLAIN_MODEL_H

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt_state_table_impl.h"
#include "tests/union/stages.h"

namespace kpt_test::plain {

struct KP {
  long id = 0;
  std::string name;
  bool is_signal = true;
  std::string entity;
  std::string type;
  std::string key;  // the name with which it was added
  bool retired = false;
};

using GROUP = std::vector<KP*>;
using SIDE = std::vector<std::pair<GROUP, GROUP>>;

struct MAP {
  SIDE sides[2];
  bool fsm = false;
  int elim = 0;
  std::shared_ptr<KPT_STATE_TABLE_IMPL> table = nullptr;  // null: the table of a kept register
  bool alive = true;
};

inline std::string text(const KP* k) { return k == nullptr ? "null" : k->name + "#" + std::to_string(k->id); }

template <class GET_TEXT, class GROUP_LIST>
std::string join(const GROUP_LIST& group, GET_TEXT get_text) {
  std::string joined;
  for (auto* k : group) {
    joined += get_text(k) + " ";
  }
  return joined;
}

struct MODEL_SET {
  std::vector<KP*> all;

  std::vector<KP*> walk() const {
    std::vector<KP*> order;
    for (const bool signals : {true, false}) {
      std::copy_if(all.begin(), all.end(), std::back_inserter(order),
                   [&](const KP* k) { return !k->retired && k->is_signal == signals; });
    }
    return order;
  }
  KP* find(bool is_signal, const std::string& key, const std::string& type) const {
    const auto found = std::find_if(all.begin(), all.end(), [&](const KP* k) {
      return !k->retired && k->is_signal == is_signal && k->key == key && (is_signal || k->type == type);
    });
    return found == all.end() ? nullptr : *found;
  }
  KP* find_namesake(const KP& k) const { return find(k.is_signal, k.name, k.type); }
};

struct MODEL {
  MODEL_SET sets[2];
  std::deque<MAP> maps;
  std::map<const KP*, MAP*> index[2];
  std::deque<KP> keypoints;

  KP* add(int side, const KP& like, long id) {
    if (KP* earlier = sets[side].find_namesake(like)) {
      earlier->retired = true;
    }
    keypoints.push_back({id, like.name, like.is_signal, like.entity, like.type, like.name, false});
    sets[side].all.push_back(&keypoints.back());
    return &keypoints.back();
  }
  MAP* map_of(int side, const KP* k) const {
    const auto found = index[side].find(k);
    return k == nullptr || found == index[side].end() || !found->second->alive ? nullptr : found->second;
  }
  void enter(int side, const SIDE& listed, MAP* map) {
    for (const auto& [n, i] : listed) {
      for (const GROUP* group : {&n, &i}) {
        for (const KP* k : *group) {
          if (k != nullptr) {
            index[side][k] = map;
          }
        }
      }
    }
  }
  MAP* add_map(MAP map) {
    maps.push_back(std::move(map));
    for (const int side : {0, 1}) {
      enter(side, maps.back().sides[side], &maps.back());
    }
    return &maps.back();
  }
};

}  // namespace kpt_test::plain

#endif
