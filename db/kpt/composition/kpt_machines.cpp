#include "db/kpt/composition/kpt_machines.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::uint32_t NONE = UINT32_MAX;

}  // namespace

bool KPT_MACHINES::resolve(KPT_RELATION& relation, KPT_CLASSES& classes) {
  boost::unordered_flat_map<NODE, std::size_t, boost::hash<NODE>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const NODE, std::size_t>>>
      places;
  KPT_VECTOR<std::size_t> kept;
  for (std::size_t place = 0; place < relation.columns().size(); ++place) {
    const auto [leader, inverted] = classes.find(relation.columns()[place]);
    relation.rename(place, leader, inverted);
    if (classes.has_value(leader)) {
      relation.keep_where(place, classes.value(leader));
      continue;
    }
    const auto [entry, is_new] = places.try_emplace(leader, place);
    if (is_new) {
      kept.push_back(place);
    } else {
      relation.keep_where_equal(entry->second, place);
    }
  }
  if (relation.rows() == 0) {
    return false;
  }
  if (kept.size() < relation.columns().size()) {
    relation = relation.project(kept);
  }
  return true;
}

bool KPT_MACHINES::solve() {
  m_gone.assign(m_machines.size(), false);
  m_waiting.assign(m_machines.size(), false);
  for (ID id = 0; id < m_machines.size(); ++id) {
    for (const NODE node : m_machines[id].relation.columns()) {
      m_users[m_classes.find(node).leader].push_back(id);
    }
    m_waiting[id] = true;
    m_queue.push_back(id);
  }
  bool ok = settle_all();
  for (ID id = 0; ok && id < m_machines.size(); ++id) {
    ok = m_gone[id] || join_neighbours(id);
  }
  return ok;
}

bool KPT_MACHINES::settle_all() {
  while (!m_queue.empty()) {
    const ID id = m_queue.front();
    m_queue.pop_front();
    m_waiting[id] = false;
    if (!m_gone[id] && !settle(id)) {
      return false;
    }
  }
  return true;
}

// A table cannot contradict the classes here: its remaining columns are different
// classes, and no value of them is known.
bool KPT_MACHINES::settle(ID id) {
  KPT_RELATION& relation = m_machines[id].relation;
  const KPT_RELATION::COLUMNS before = relation.columns();
  if (!resolve(relation, m_classes)) {
    m_conflict = before;
    return false;
  }
  const KPT_RELATION::SETTLED settled = relation.settle();
  for (const auto& [column, value] : settled.constants) {
    m_classes.set_value(column, value);
    wake(column);
  }
  for (const auto& [first, second, inverse] : settled.twins) {
    NODE absorbed = NONE;
    m_classes.unite(first, second, inverse, &absorbed);
    if (absorbed != NONE) {
      take_over_users(absorbed);
    }
  }
  return true;
}

void KPT_MACHINES::wake(NODE leader) {
  for (const ID user : m_users[m_classes.find(leader).leader]) {
    if (!m_waiting[user]) {
      m_waiting[user] = true;
      m_queue.push_back(user);
    }
  }
}

// A table that has both columns is a user of both, so it is enough to wake the
// users of the rarer column.
void KPT_MACHINES::take_over_users(NODE absorbed) {
  NUMBERS taken = std::move(m_users[absorbed]);
  m_users.erase(absorbed);
  const NODE leader = m_classes.find(absorbed).leader;
  NUMBERS& users = m_users[leader];
  if (users.size() < taken.size()) {
    users.swap(taken);
  }
  for (const ID user : taken) {
    if (!m_waiting[user]) {
      m_waiting[user] = true;
      m_queue.push_back(user);
    }
  }
  users.insert(users.end(), taken.begin(), taken.end());
}

// The first machine, in the order of stages, that shares a class with this one.
KPT_MACHINES::ID KPT_MACHINES::neighbour_of(ID id, const NUMBERS& apart) {
  ID first = NONE;
  for (const NODE node : m_machines[id].relation.columns()) {
    NUMBERS& users = m_users[m_classes.find(node).leader];
    std::erase_if(users, [&](ID user) { return m_gone[user]; });
    for (const ID user : users) {
      if (user != id && user < first && std::find(apart.begin(), apart.end(), user) == apart.end()) {
        first = user;
      }
    }
  }
  return first;
}

bool KPT_MACHINES::is_used_beside(NODE leader, ID a, ID b) {
  const NUMBERS& users = m_users[leader];
  return std::any_of(users.begin(), users.end(), [&](ID user) { return user != a && user != b && !m_gone[user]; });
}

bool KPT_MACHINES::join_neighbours(ID id) {
  NUMBERS apart;
  for (ID other = neighbour_of(id, apart); other != NONE; other = neighbour_of(id, apart)) {
    KPT_RELATION joined;
    MACHINE& machine = m_machines[id];
    if (!resolve(machine.relation, m_classes) || !resolve(m_machines[other].relation, m_classes)) {
      m_conflict = machine.relation.columns();
      return false;
    }
    const auto is_kept = [&](NODE leader) {
      return m_classes.is_marked(leader, KPT_CLASSES::AT_AN_END) || is_used_beside(leader, id, other);
    };
    if (!KPT_RELATION::join(machine.relation, m_machines[other].relation, is_kept, &joined)) {
      apart.push_back(other);
      m_left_apart.push_back(m_machines[other].relation.columns());
      continue;
    }
    if (joined.rows() == 0) {
      m_conflict = machine.relation.columns();
      return false;
    }
    m_gone[other] = true;
    for (const NODE node : m_machines[other].relation.columns()) {
      m_users[node].push_back(id);
    }
    machine.facts.insert(machine.facts.end(), m_machines[other].facts.begin(), m_machines[other].facts.end());
    machine.relation = std::move(joined);
    m_machines[other] = MACHINE();
    m_waiting[id] = true;
    m_queue.push_back(id);
    if (!settle_all()) {
      return false;
    }
  }
  finish(id);
  return true;
}

void KPT_MACHINES::finish(ID id) {
  m_gone[id] = true;
  MACHINE machine = std::move(m_machines[id]);
  resolve(machine.relation, m_classes);
  KPT_VECTOR<std::size_t> kept;
  for (std::size_t place = 0; place < machine.relation.columns().size(); ++place) {
    if (m_classes.is_marked(machine.relation.columns()[place], KPT_CLASSES::AT_AN_END)) {
      kept.push_back(place);
    }
  }
  machine.relation = machine.relation.project(kept);
  for (const KPT_VECTOR<std::size_t>& places : machine.relation.factors()) {
    if (places.size() > 1) {
      m_solved.push_back({machine.relation.project(places), machine.facts});
    }
  }
}
