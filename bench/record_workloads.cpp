// Records N one-to-one registers, and destroys them.
#include <boost/unordered/unordered_flat_map.hpp>
#include <list>
#include <unordered_map>

#include "bench/database.h"
#include "bench/sqlite.h"
#include "bench/workload.h"

namespace bench {

namespace {

RUN record_kpt(unsigned count) {
  return [db = std::make_shared<DATABASE>("record"), from = names('a', count), to = names('b', count),
          order = in_order(count)] { db->record(from, to, order); };
}

RUN destroy_kpt(unsigned count) {
  return [db = recorded("destroy", count)] { db->destroy(); };
}

// The same facts by hand: which register became which, found by either name.
struct FLAT {
  struct PAIR {
    unsigned r;
    unsigned t;
  };
  boost::unordered_flat_map<std::string, unsigned> r_index;
  boost::unordered_flat_map<std::string, unsigned> t_index;
  std::vector<PAIR> pairs;
};

RUN record_flat(unsigned count) {
  return [flat = std::make_shared<FLAT>(), from = names('a', count), to = names('b', count)] {
    for (unsigned k = 0; k < from->size(); ++k) {
      if (flat->r_index.contains((*from)[k]) || flat->t_index.contains((*to)[k])) {
        continue;
      }
      flat->r_index.emplace((*from)[k], k);
      flat->t_index.emplace((*to)[k], k);
      flat->pairs.push_back({k, k});
    }
  };
}

RUN record_sqlite(unsigned count) {
  return [db = std::make_shared<SQLITE>(), from = names('a', count), to = names('b', count), order = in_order(count)] {
    db->record("stage", from, to, order);
  };
}

// The same model with standard containers, as one would write it first: registers
// with their texts and attributes; maps with a vector of pairs of lists on each
// side, a state table and attributes; indexes by name and by pointer.
struct TEXTBOOK {
  using ATTRIBUTES = std::unordered_map<std::string, std::string>;
  struct REGISTER {
    std::string name;
    long id;
    int kind;
    std::string entity;
    std::string type;
    ATTRIBUTES attributes;
  };
  using GROUP = std::list<REGISTER*>;
  using SIDE = std::vector<std::pair<GROUP, GROUP>>;
  struct MAP {
    SIDE r;
    SIDE t;
    std::vector<bool> r_table;
    std::vector<bool> t_table;
    int kind = 0;
    int status = 0;
    ATTRIBUTES attributes;
  };
  using SET = std::unordered_map<std::string, std::unique_ptr<REGISTER>>;

  void associate(const std::string& from, const std::string& to) {
    if (r_set.contains(from) || t_set.contains(to)) {
      return;
    }
    REGISTER* r = add(r_set, from);
    REGISTER* t = add(t_set, to);
    auto map = std::make_unique<MAP>();
    map->r = SIDE{{GROUP{r}, GROUP{}}};
    map->t = SIDE{{GROUP{t}, GROUP{}}};
    map->r_table = {false, true};
    map->t_table = {false, true};
    r_index[r] = map.get();
    t_index[t] = map.get();
    maps.push_back(std::move(map));
  }
  static REGISTER* add(SET& set, const std::string& name) {
    auto& place = set[name];
    place = std::make_unique<REGISTER>(REGISTER{name, static_cast<long>(set.size()), 0, "", "", {}});
    return place.get();
  }

  SET r_set;
  SET t_set;
  std::unordered_map<REGISTER*, MAP*> r_index;
  std::unordered_map<REGISTER*, MAP*> t_index;
  std::list<std::unique_ptr<MAP>> maps;
};

RUN record_textbook(unsigned count) {
  return [book = std::make_shared<TEXTBOOK>(), from = names('a', count), to = names('b', count)] {
    for (unsigned k = 0; k < from->size(); ++k) {
      book->associate((*from)[k], (*to)[k]);
    }
  };
}

}  // namespace

std::vector<WORKLOAD> record_workloads() {
  return {{"record/kpt", record_kpt},
          {"record/flat", record_flat},
          {"record/sqlite", record_sqlite},
          {"record/textbook", record_textbook},
          {"destroy/kpt", destroy_kpt}};
}

}  // namespace bench
