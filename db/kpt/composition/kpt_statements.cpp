// What the maps of a stage say. The members of the n groups of an index are
// equal, and those of its i groups are their inverse. A status is the value of
// the reference representative. A column of a table is the value of the
// representative of its index: the first of the n group, or of the i group when
// the n group is empty. Events leave maps in this form.
#include "db/kpt/composition/kpt_statements.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <utility>

#include "db/kpt/composition/kpt_machine_table.h"

namespace {

constexpr auto NONE = KPT_NETLISTS::NONE;

const NI_PAIR& pair_at(const NI_PAIR_VECTOR& side, std::size_t index) {
  static const NI_PAIR s_empty;
  return index < side.size() ? side[index] : s_empty;
}

bool is_empty(const NI_PAIR& pair) { return pair.first.empty() && pair.second.empty(); }
bool representative_is_inverted(const NI_PAIR& pair) { return pair.first.empty() && !pair.second.empty(); }

}  // namespace

bool KPT_STATEMENTS::read(std::size_t stage, KPT_KEYPOINTS_DB_IMPL& db, KPT_STEPS& steps) {
  m_stage = stage;
  KPT_TRANSFORMATION_SET_IMPL& maps = *db.get_transformation_set();
  for (MAP* map : maps.get_list_of_register_transformations()) {
    steps.next();
    m_has_attributes |= !map->attributes().empty();
    if (!(map->map_has_fsm_transformation() ? read_machine(*map) : read_plain(*map))) {
      return false;
    }
    ++m_maps;
  }
  db.get_reference_set()->for_each_keypoint([&](KPT_REGISTER_KEYPOINT_IMPL* keypoint) {
    if (maps.get_map_of_r_keypoint(keypoint) == nullptr) {
      m_classes.mark(m_netlists.node(stage, keypoint), KPT_CLASSES::PARTIAL);
    }
    return true;
  });
  return true;
}

KPT_STATEMENTS::NODE KPT_STATEMENTS::node_of(MAP& map, const KPT_NETLISTS& netlists, std::size_t stage) {
  NODE found = NONE;
  for (const NI_PAIR_VECTOR* side : {&map.r_vec(), &map.t_vec()}) {
    KPT_TRANSFORMATION_IMPL::for_each_keypoint(
        *side, [&](const KPT_KEYPOINT* keypoint) { found = found == NONE ? netlists.node(stage, keypoint) : found; });
  }
  return found;
}

bool KPT_STATEMENTS::take_up(KPT_CLASSES::OUTCOME outcome, NODE a, NODE b) {
  if (outcome == KPT_CLASSES::CONTRADICTION) {
    m_conflict = {a, b};
  }
  return outcome != KPT_CLASSES::CONTRADICTION;
}

bool KPT_STATEMENTS::read_group(const KPT_KEYPOINT_LIST& group, bool inverted, BIT* bit) {
  for (const KPT_KEYPOINT* keypoint : group) {
    const NODE node = m_netlists.node(m_stage, keypoint);
    if (node == NONE) {
      bit->has_unknown = true;
    } else if (bit->node == NONE) {
      bit->node = node;
      bit->inverted = inverted;
    } else if (!take_up(m_classes.unite(bit->node, node, inverted != bit->inverted), bit->node, node)) {
      return false;
    }
  }
  return true;
}

bool KPT_STATEMENTS::read_pair(const NI_PAIR& pair, BIT* bit) {
  return read_group(pair.first, false, bit) && read_group(pair.second, true, bit);
}

bool KPT_STATEMENTS::read_plain(MAP& map) {
  const std::size_t indices = std::max(map.r_vec().size(), map.t_vec().size());
  for (std::size_t index = 0; index < indices; ++index) {
    BIT r;
    BIT t;
    if (!read_pair(pair_at(map.r_vec(), index), &r) || !read_pair(pair_at(map.t_vec(), index), &t)) {
      return false;
    }
    if (r.node != NONE && t.node != NONE &&
        !take_up(m_classes.unite(r.node, t.node, r.inverted != t.inverted), r.node, t.node)) {
      return false;
    }
    if (index == 0 && kpt_is_stuck(map.get_elim_status()) && !read_status(map, r.node != NONE ? r : t)) {
      return false;
    }
    judge_copies(map, index, r, t);
  }
  return true;
}

// The groups decide which keypoint is the representative, even when it is not a
// register of the stage.
bool KPT_STATEMENTS::read_status(MAP& map, const BIT& bit) {
  if (bit.node == NONE) {
    return true;
  }
  const NI_PAIR& r = pair_at(map.r_vec(), 0);
  const NI_PAIR& told = is_empty(r) ? pair_at(map.t_vec(), 0) : r;
  const bool value = (map.get_elim_status() == KPT_STUCK_AT_ONE) != representative_is_inverted(told);
  return take_up(m_classes.set_value(bit.node, value != bit.inverted), bit.node, bit.node);
}

// What became of the reference registers of an index, where this is not a constant.
void KPT_STATEMENTS::judge_copies(MAP& map, std::size_t index, const BIT& r, const BIT& t) {
  const NODE node = r.node != NONE ? r.node : t.node;
  if (node == NONE) {
    return;
  }
  const bool has_no_copy = r.node != NONE && t.node == NONE && !t.has_unknown;
  const bool is_told = index == 0 && map.get_elim_status() != KPT_NOT_ELIMINATED;
  if (has_no_copy && is_told && map.get_elim_status() == KPT_NO_FANOUT) {
    m_classes.mark(node, KPT_CLASSES::WITHOUT_FANOUT);
  } else if (t.has_unknown || (has_no_copy && !(is_told && kpt_is_stuck(map.get_elim_status())))) {
    m_classes.mark(node, KPT_CLASSES::PARTIAL);
  }
  if (kpt_is_partial(map)) {
    m_classes.mark(node, KPT_CLASSES::PARTIAL);
  }
}

// ---- Machines ----

// The columns of a table: those of the reference side, then those of the
// transformed side.
struct KPT_STATEMENTS::COLUMNS {
  std::size_t of_r = 0;
  KPT_VECTOR<BIT> bits;           // a column without a register gets a node of its own
  KPT_VECTOR<bool> turned;        // the node is the inverse of the column
  KPT_VECTOR<bool> has_register;  // all listed keypoints are registers
};

bool KPT_STATEMENTS::read_columns(MAP& map, COLUMNS* columns) {
  columns->of_r = map.r_vec().size();
  for (const NI_PAIR_VECTOR* side : {&map.r_vec(), &map.t_vec()}) {
    for (const NI_PAIR& pair : *side) {
      BIT bit;
      if (!read_pair(pair, &bit)) {
        return false;
      }
      columns->has_register.push_back(bit.node != NONE && !bit.has_unknown);
      if (bit.node == NONE) {
        bit.node = m_classes.add();
      }
      columns->turned.push_back(representative_is_inverted(pair) != bit.inverted);
      columns->bits.push_back(bit);
    }
  }
  return true;
}

namespace {

// Adds the bits of one side to a row.
void add_bits(const KPT_BIT_TABLE& bits, std::uint64_t position, std::size_t count, std::size_t place,
              KPT_RELATION* relation) {
  for (std::size_t k = 0; k < count; ++k) {
    if (bits.get(position + k)) {
      relation->set_bit(relation->rows() - 1, place + k);
    }
  }
}

// The rows of a table. After the last bit that is set all rows are zeros, and the
// relation has one such row.
KPT_RELATION rows_of(const KPT_STATE_TABLE_IMPL& table, KPT_RELATION::COLUMNS names) {
  KPT_RELATION relation(std::move(names));
  const std::size_t of_r = table.get_num_reference_registers();
  const std::size_t of_t = table.get_num_transformed_registers();
  const KPT_BIT_TABLE& r = table.get_bits(KPT_REFERENCE_SET);
  const KPT_BIT_TABLE& t = table.get_bits(KPT_TRANSFORMED_SET);
  for (std::uint64_t row = 0; row < table.get_num_states(); ++row) {
    relation.add_row();
    if (row * of_r >= r.kept() && row * of_t >= t.kept()) {
      break;
    }
    add_bits(r, row * of_r, of_r, 0, &relation);
    add_bits(t, row * of_t, of_t, of_r, &relation);
  }
  relation.make_distinct();
  return relation;
}

// Keeps only the rows in which columns of the same register are equal.
bool drop_repeated_columns(KPT_RELATION& relation) {
  boost::unordered_flat_map<std::uint32_t, std::size_t> places;
  KPT_VECTOR<std::size_t> kept;
  for (std::size_t place = 0; place < relation.columns().size(); ++place) {
    const auto [entry, is_new] = places.try_emplace(relation.columns()[place], place);
    if (is_new) {
      kept.push_back(place);
    } else {
      relation.keep_where_equal(entry->second, place);
    }
  }
  if (kept.size() < relation.columns().size()) {
    relation = relation.project(kept);
  }
  return relation.rows() > 0;
}

}  // namespace

bool KPT_STATEMENTS::read_machine(MAP& map) {
  COLUMNS columns;
  if (!read_columns(map, &columns)) {
    return false;
  }
  const bool is_silent = !kpt_table_fits(map);
  if (is_silent || kpt_is_partial(map)) {
    mark_partial(columns);
  }
  if (is_silent) {
    m_silent.push_back({m_stage, &map, node_of(map, m_netlists, m_stage)});
    return true;
  }
  return read_table(map, columns);
}

void KPT_STATEMENTS::mark_partial(const COLUMNS& columns) {
  for (const BIT& bit : columns.bits) {
    m_classes.mark(bit.node, KPT_CLASSES::PARTIAL);
  }
}

bool KPT_STATEMENTS::read_table(MAP& map, COLUMNS& columns) {
  KPT_RELATION::COLUMNS names;
  for (const BIT& bit : columns.bits) {
    names.push_back(bit.node);
  }
  KPT_RELATION relation = rows_of(map.state_table(), names);
  for (std::size_t place = 0; place < names.size(); ++place) {
    relation.rename(place, names[place], columns.turned[place]);
  }
  if (!drop_repeated_columns(relation)) {
    m_conflict = names;
    return false;
  }
  return take_up_table(std::move(relation), columns);
}

// A table that can be split says only what its parts say. A register in a part of
// several columns is encoded and not copied, so what became of other registers
// says nothing about it.
bool KPT_STATEMENTS::take_up_table(KPT_RELATION relation, COLUMNS& columns) {
  const KPT_RELATION::SETTLED settled = relation.settle();
  boost::unordered_flat_map<NODE, NODE> twin_of;
  for (const auto& [column, value] : settled.constants) {
    twin_of.emplace(column, NONE);
    if (!take_up(m_classes.set_value(column, value), column, column)) {
      return false;
    }
  }
  for (const auto& [first, second, inverse] : settled.twins) {
    twin_of.emplace(second, first);
    if (!take_up(m_classes.unite(first, second, inverse), first, second)) {
      return false;
    }
  }
  for (const KPT_VECTOR<std::size_t>& places : relation.factors()) {
    if (places.size() > 1) {
      m_machines.add(relation.project(places), {static_cast<std::uint32_t>(m_maps)});
      for (const std::size_t place : places) {
        m_classes.mark(relation.columns()[place], KPT_CLASSES::PARTIAL);
      }
    }
  }
  // The copies of a register outside such parts are the columns that equal it.
  const auto leader = [&](NODE node) {
    const auto found = twin_of.find(node);
    return found == twin_of.end() ? node : found->second;
  };
  boost::unordered_flat_map<NODE, bool> is_copied;
  for (std::size_t place = columns.of_r; place < columns.bits.size(); ++place) {
    const auto [entry, is_new] = is_copied.try_emplace(leader(columns.bits[place].node), true);
    entry->second = entry->second && columns.has_register[place];
  }
  for (std::size_t place = 0; place < columns.of_r; ++place) {
    const NODE node = leader(columns.bits[place].node);
    const auto found = is_copied.find(node);
    if (node != NONE && (found == is_copied.end() || !found->second)) {
      m_classes.mark(node, KPT_CLASSES::PARTIAL);
    }
  }
  return true;
}
