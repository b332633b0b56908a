// Unites two stages of N one-to-one registers, the second recorded in the same
// order or in random order.
#include <boost/unordered/unordered_flat_map.hpp>
#include <deque>

#include "bench/database.h"
#include "bench/sqlite.h"
#include "bench/workload.h"

namespace bench {

namespace {

using ORDER_OF = ORDER (*)(unsigned);

std::function<RUN(unsigned)> unite_kpt(ORDER_OF order_of) {
  return [order_of](unsigned count) -> RUN {
    auto first = recorded("first", count);
    auto second = std::make_shared<DATABASE>("second");
    second->record(names('b', count), names('c', count), order_of(count));
    return [first, second] { (*first)->unite(**second); };
  };
}

std::function<RUN(unsigned)> compose_kpt(ORDER_OF order_of) {
  return [order_of](unsigned count) -> RUN {
    auto first = recorded("first", count);
    auto second = std::make_shared<DATABASE>("second");
    second->record(names('b', count), names('c', count), order_of(count));
    auto all = std::make_shared<KPT_UNREGISTERED_DB>(KPT_UNREGISTERED_DB::create("all"));
    return [first, second, all] { (*all)->compose({**first, **second}); };
  };
}

std::function<RUN(unsigned)> unite_sqlite(ORDER_OF order_of) {
  return [order_of](unsigned count) -> RUN {
    auto db = std::make_shared<SQLITE>();
    db->record("first", names('a', count), names('b', count), in_order(count));
    db->record("second", names('b', count), names('c', count), order_of(count));
    return [db] {
      db->run(
          "CREATE TABLE united(r TEXT, t TEXT);"
          "INSERT INTO united SELECT first.r, second.t FROM first JOIN second ON first.t = second.r;"
          "CREATE UNIQUE INDEX united_r ON united(r); CREATE UNIQUE INDEX united_t ON united(t)");
    };
  };
}

// Two stages by hand: registers by name in flat maps. The composition makes new
// maps and enters them into two new indexes by register.
struct BY_HAND {
  struct REGISTER {
    std::string name;
  };
  struct MAP {
    const REGISTER* r;
    const REGISTER* t;
  };
  struct STAGE {
    std::deque<REGISTER> registers;
    std::deque<MAP> maps;
    boost::unordered_flat_map<std::string, const MAP*> by_r;
    void record(const std::string& from, const std::string& to) {
      const REGISTER* r = &registers.emplace_back(REGISTER{from});
      const REGISTER* t = &registers.emplace_back(REGISTER{to});
      by_r.emplace(from, &maps.emplace_back(MAP{r, t}));
    }
  };
  using INDEX = boost::unordered_flat_map<const REGISTER*, const MAP*>;

  void compose() {
    for (const MAP& map : first.maps) {
      const auto next = second.by_r.find(map.t->name);
      if (next != second.by_r.end()) {
        const MAP* made = &maps.emplace_back(MAP{map.r, next->second->t});
        r_index.emplace(made->r, made);
        t_index.emplace(made->t, made);
      }
    }
  }

  STAGE first;
  STAGE second;
  std::deque<MAP> maps;
  INDEX r_index;
  INDEX t_index;
};

std::function<RUN(unsigned)> unite_by_hand(ORDER_OF order_of) {
  return [order_of](unsigned count) -> RUN {
    auto stages = std::make_shared<BY_HAND>();
    const NAMES a = names('a', count);
    const NAMES b = names('b', count);
    const NAMES c = names('c', count);
    for (unsigned k = 0; k < count; ++k) {
      stages->first.record((*a)[k], (*b)[k]);
    }
    const ORDER order = order_of(count);
    for (const unsigned k : *order) {
      stages->second.record((*b)[k], (*c)[k]);
    }
    return [stages] { stages->compose(); };
  };
}

}  // namespace

std::vector<WORKLOAD> unite_workloads() {
  return {{"unite/kpt", unite_kpt(in_order)},
          {"unite/by_hand", unite_by_hand(in_order)},
          {"unite/sqlite", unite_sqlite(in_order)},
          {"compose/kpt", compose_kpt(in_order)},
          {"compose_shuffled/kpt", compose_kpt(shuffled)},
          {"unite_shuffled/kpt", unite_kpt(shuffled)},
          {"unite_shuffled/by_hand", unite_by_hand(shuffled)},
          {"unite_shuffled/sqlite", unite_sqlite(shuffled)}};
}

}  // namespace bench
