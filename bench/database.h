// A keypoint database of one-to-one registers, which exists as long as a workload.
#ifndef KPT_BENCH_DATABASE_H
#define KPT_BENCH_DATABASE_H

#include <memory>
#include <string>

#include "bench/names.h"
#include "db/kpt/kpt.h"

namespace bench {

class DATABASE {
 public:
  explicit DATABASE(std::string name) : m_name(std::move(name)), m_db(manager().create_keypoints_db(m_name)) {}
  ~DATABASE() { destroy(); }
  DATABASE(const DATABASE&) = delete;
  DATABASE& operator=(const DATABASE&) = delete;

  static KPT_KEYPOINTS_MANAGER& manager() { return *KPT_KEYPOINTS_MANAGER::get_instance(); }
  const KPT_KEYPOINTS_DB& operator*() const { return *m_db; }
  const KPT_KEYPOINTS_DB* operator->() const { return m_db; }

  void record(const NAMES& from, const NAMES& to, const ORDER& order) const {
    for (const unsigned k : *order) {
      m_db->associate_registers_signal_to_signal((*from)[k], (*to)[k]);
    }
  }
  void destroy() {
    if (m_db != nullptr) {
      manager().destroy_keypoints_db(m_name);
      m_db = nullptr;
    }
  }

 private:
  std::string m_name;
  KPT_KEYPOINTS_DB* m_db;
};

/// A database that leads from netlist a to netlist b.
inline std::shared_ptr<DATABASE> recorded(const char* name, unsigned count) {
  auto db = std::make_shared<DATABASE>(name);
  db->record(names('a', count), names('b', count), in_order(count));
  return db;
}

}  // namespace bench

#endif
