// Random edits, unions, alignments, translations and eliminations of maps. Each
// is compared with the plain map: the same answer, the same debug lines, and the
// same groups, table and status after every step.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt_transformation_impl.h"
#include "tests/model/keypoint_world.h"
#include "tests/support/host_lines.h"
#include "tests/support/plain_map.h"
#include "tests/support/seed.h"

namespace {

using kpt_test::LINES;
using namespace kpt_test::plain;

using REAL_MAP = KPT_TRANSFORMATION_IMPL;

struct SUBJECT {
  std::optional<REAL_MAP> map;
  MAP plain;
};

class TransformationModel : public testing::Test {
 protected:
  void step();

  kpt_test::WORLD world;
  kpt_test::HOST_LINES m_host;
  LINES m_lines;  // what the plain map would have issued
  std::string m_operation;
  std::mt19937 m_random{kpt_test::seed()};

 private:
  static constexpr std::size_t SUBJECTS = 4;
  static constexpr std::size_t MOST_INDICES = 4;
  static constexpr std::size_t MOST_REGISTERS = 12;
  static constexpr unsigned MOST_STATES = 8;
  static constexpr int REASONS = 6;

  unsigned below(unsigned count) { return std::uniform_int_distribution<unsigned>(0, count - 1)(m_random); }
  bool once_in(unsigned count) { return below(count) == 0; }

  std::size_t any_keypoint() { return once_in(12) ? NONE : below(static_cast<unsigned>(world.count())); }

  // Mostly a keypoint that the side lists at the first index, so that most edits are accepted.
  std::size_t likely_keypoint(const MAP& plain, SIDE side) {
    const PAIR pair = plain.pair(side, once_in(8) ? 1 : 0);
    const GROUP& group = pair.group(below(2) == 1);
    return group.empty() || once_in(8) ? any_keypoint() : group[below(static_cast<unsigned>(group.size()))];
  }

  GROUP any_group() {
    GROUP group(once_in(3) ? 0 : once_in(3) ? 1 + below(3) : 1);
    std::generate(group.begin(), group.end(), [this] { return any_keypoint(); });
    return group;
  }

  PAIRS any_side() {
    PAIRS pairs(once_in(20) ? 0 : 1 + below(MOST_INDICES));
    for (PAIR& pair : pairs) {
      pair.n = any_group();
      pair.i = once_in(2) ? any_group() : GROUP();
    }
    return pairs;
  }

  // Mostly as wide as the sides, sometimes of any size.
  TABLE any_table(const MAP& plain) {
    const bool fits = !once_in(5);
    TABLE table(below(MOST_STATES + 1), fits ? static_cast<unsigned>(plain.sides[R].size()) : below(5),
                fits ? static_cast<unsigned>(plain.sides[T].size()) : below(5));
    for (std::vector<bool>& bits : table.bits) {
      std::generate(bits.begin(), bits.end(), [this] { return once_in(2); });
    }
    return table;
  }

  // Unions let maps grow; one that has outgrown the run is replaced.
  static bool is_too_large(const MAP& plain) {
    std::size_t most = 0;
    for (const PAIRS& pairs : plain.sides) {
      for (const PAIR& pair : pairs) {
        most = std::max({most, pair.n.size(), pair.i.size()});
      }
    }
    return most > MOST_REGISTERS || plain.sides[R].size() > 2 * MOST_INDICES ||
           plain.sides[T].size() > 2 * MOST_INDICES || plain.table.rows > std::size_t{MOST_STATES} * MOST_STATES;
  }

  void create(SUBJECT& subject);
  void create_machine(SUBJECT& subject);

  void edit(SUBJECT& subject);
  void add(SUBJECT& subject, unsigned index, std::size_t keypoint);
  void remove(SUBJECT& subject, unsigned index, std::size_t keypoint);
  void replicate(SUBJECT& subject, std::size_t keypoint);
  void eliminate(SUBJECT& subject, std::size_t keypoint);

  void combine(SUBJECT& subject, SUBJECT& other);
  void align_r(SUBJECT& subject, SUBJECT& other);
  void align_t(SUBJECT& subject, SUBJECT& other);
  void update(SUBJECT& subject, const SUBJECT& other);
  void translate(SUBJECT& subject);

  void ask(const SUBJECT& subject, const SUBJECT& other);
  void ask_for_registers(const SUBJECT& subject, unsigned index);
  void ask_for_groups(const SUBJECT& subject, SIDE side, unsigned index);
  void ask_for_the_whole(const SUBJECT& subject, const SUBJECT& other);

  void compare(const SUBJECT& subject);
  void expect(bool answer, bool expected) {
    EXPECT_EQ(answer, expected) << m_operation;
    EXPECT_EQ(m_host.take_debug(), m_lines) << m_operation;
    m_lines.clear();
  }

  std::array<SUBJECT, SUBJECTS> m_subjects;
};

// ---- Creation ----

void TransformationModel::create(SUBJECT& subject) {
  MAP& plain = subject.plain;
  plain = MAP();
  const unsigned kind = below(4);
  if (kind == 0) {
    const std::size_t r = any_keypoint();
    const std::size_t t = any_keypoint();
    plain.sides[R] = {{{r}, {}}};
    plain.sides[T] = {{{t}, {}}};
    subject.map.emplace(world.pointer(r), world.pointer(t));
    return;
  }
  if (kind == 1) {
    create_machine(subject);
    return;
  }
  plain.sides[R] = any_side();
  plain.sides[T] = any_side();
  plain.status = static_cast<KPT_ELIM_ENUM>(below(REASONS));
  if (kind == 2) {
    subject.map.emplace(world.vector_of(plain.sides[R]), world.vector_of(plain.sides[T]), plain.status);
    return;
  }
  plain.fsm = true;
  plain.table = any_table(plain);
  const NI_PAIR_VECTOR r = world.vector_of(plain.sides[R]);
  const NI_PAIR_VECTOR t = world.vector_of(plain.sides[T]);
  subject.map.emplace(r, t, real_table(plain.table), plain.status);
}

void TransformationModel::create_machine(SUBJECT& subject) {
  MAP& plain = subject.plain;
  GROUP registers[2];
  for (const SIDE side : {R, T}) {
    registers[side].resize(1 + below(MOST_INDICES));
    for (std::size_t& keypoint : registers[side]) {
      keypoint = any_keypoint();
      plain.sides[side].push_back({{keypoint}, {}});
    }
  }
  plain.fsm = true;
  plain.table = any_table(plain);
  subject.map.emplace(world.list_of(registers[R]), world.list_of(registers[T]), real_table(plain.table));
}

// ---- Edits ----

void TransformationModel::edit(SUBJECT& subject) {
  REAL_MAP& map = *subject.map;
  MAP& plain = subject.plain;
  const unsigned index = below(MOST_INDICES + 2);
  const auto short_index = static_cast<unsigned short>(index);
  const std::size_t keypoint = likely_keypoint(plain, T);
  switch (below(8)) {
    case 0:
      return add(subject, index, keypoint);
    case 1:
      return remove(subject, index, keypoint);
    case 2:
      return replicate(subject, keypoint);
    case 3: {
      m_operation = "retime";
      const bool expected = plain.retime(keypoint, m_lines);
      return expect(map.set_inverter_retimed_register(world.pointer(keypoint)), expected);
    }
    case 4:
      return eliminate(subject, keypoint);
    case 5: {
      m_operation = "erase";
      const bool expected = plain.erase_t_index(index);
      return expect(map.erase_entry_in_t_state_vector(short_index), expected);
    }
    case 6: {
      m_operation = "interchange";
      const int side = static_cast<int>(below(3));
      const bool expected = plain.interchange(side, m_lines);
      return expect(map.interchange_registers_in_n_i_groups_of_map(static_cast<KPT_SET_ENUM>(side)), expected);
    }
    default: {
      m_operation = "update table";
      const unsigned b = below(MOST_INDICES + 3);
      const bool expected = plain.update_table(index, b, m_lines);
      return expect(map.update_state_table(short_index, static_cast<unsigned short>(b)), expected);
    }
  }
}

void TransformationModel::add(SUBJECT& subject, unsigned index, std::size_t keypoint) {
  m_operation = "add";
  REAL_MAP& map = *subject.map;
  const SIDE side = below(2) == 0 ? R : T;
  const bool inverted = below(2) == 1;
  PAIRS& pairs = subject.plain.sides[side];
  const bool there = index < pairs.size();
  if (there) {
    pairs[index].group(inverted).push_back(keypoint);
  }
  KPT_KEYPOINT* pointer = world.pointer(keypoint);
  if (side == R) {
    expect(inverted ? map.add_keypoint_to_r_i_group_of_map(pointer, index)
                    : map.add_keypoint_to_r_n_group_of_map(pointer, index),
           there);
  } else {
    expect(inverted ? map.add_keypoint_to_t_i_group_of_map(pointer, index)
                    : map.add_keypoint_to_t_n_group_of_map(pointer, index),
           there);
  }
}

void TransformationModel::remove(SUBJECT& subject, unsigned index, std::size_t keypoint) {
  m_operation = "delete";
  REAL_MAP& map = *subject.map;
  const bool inverted = below(2) == 1;
  PAIRS& pairs = subject.plain.sides[T];
  const bool removed = index < pairs.size() && remove_first(pairs[index].group(inverted), keypoint);
  expect(inverted ? map.delete_keypoint_from_t_i_group_of_map(world.pointer(keypoint), index)
                  : map.delete_keypoint_from_t_n_group_of_map(world.pointer(keypoint), index),
         removed);
}

void TransformationModel::replicate(SUBJECT& subject, std::size_t keypoint) {
  m_operation = "replicate";
  const std::size_t replica = any_keypoint();
  for (const std::size_t k : {keypoint, replica}) {
    if (k != NONE && world.key_of(k) == nullptr) {
      return;  // the operation accepts only registers
    }
  }
  const bool expected = subject.plain.replicate(keypoint, replica);
  expect(subject.map->add_replicated_register(static_cast<KPT_REGISTER_KEYPOINT_IMPL*>(world.pointer(keypoint)),
                                              static_cast<KPT_REGISTER_KEYPOINT_IMPL*>(world.pointer(replica))),
         expected);
}

void TransformationModel::eliminate(SUBJECT& subject, std::size_t keypoint) {
  m_operation = "eliminate";
  const auto reason = static_cast<KPT_ELIM_ENUM>(once_in(6) ? below(REASONS) : 1 + below(3));
  const bool expected = subject.plain.eliminate(keypoint, reason, m_lines);
  expect(subject.map->set_eliminated(world.pointer(keypoint), reason), expected);
}

// ---- Combinations ----

void TransformationModel::combine(SUBJECT& subject, SUBJECT& other) {
  REAL_MAP& map = *subject.map;
  MAP& plain = subject.plain;
  switch (below(7)) {
    case 0:
      m_operation = "copy map";
      plain.append(other.plain);
      return expect(map.copy_map(*other.map), true);
    case 1: {
      m_operation = "simple union";
      const bool expected = plain.unite_simply(other.plain);
      return expect(map.make_simple_union(*other.map), expected);
    }
    case 2: {
      m_operation = "union";
      const bool expected = plain.unite(other.plain, m_lines);
      return expect(map.make_union(*other.map), expected);
    }
    case 3:
      return align_r(subject, other);
    case 4:
      return align_t(subject, other);
    case 5:
      return update(subject, other);
    default:
      return translate(subject);
  }
}

void TransformationModel::align_r(SUBJECT& subject, SUBJECT& other) {
  m_operation = "align r";
  const std::size_t reference = likely_keypoint(subject.plain, R);
  const std::size_t transformed = likely_keypoint(other.plain, T);
  const bool expected = subject.plain.align_after(other.plain, transformed, reference);
  expect(subject.map->align_r_register(world.pointer(reference), &*other.map, world.pointer(transformed)), expected);
}

void TransformationModel::align_t(SUBJECT& subject, SUBJECT& other) {
  m_operation = "align t";
  const std::size_t transformed = likely_keypoint(subject.plain, T);
  const std::size_t reference = likely_keypoint(other.plain, R);
  const bool expected = other.plain.align_after(subject.plain, transformed, reference);
  expect(subject.map->align_t_register(world.pointer(transformed), &*other.map, world.pointer(reference)), expected);
  compare(other);
}

void TransformationModel::update(SUBJECT& subject, const SUBJECT& other) {
  m_operation = "update";
  GROUP entered{1};
  GROUP left{2};
  KPT_KEYPOINT_LIST map_entered = world.list_of(entered);
  KPT_KEYPOINT_LIST map_left = world.list_of(left);
  subject.plain.update(other.plain, entered, left);
  expect(subject.map->update_transformations(*other.map, map_entered, map_left), true);
  EXPECT_EQ(world.numbers(map_entered), entered);
  EXPECT_EQ(world.numbers(map_left), left);
}

void TransformationModel::translate(SUBJECT& subject) {
  m_operation = "translate";
  REAL_MAP& map = *subject.map;
  MAP& plain = subject.plain;
  const auto namesake_of = [this](std::size_t k) { return world.namesake_in_set(k); };
  const PAIRS r = translated(plain.sides[R], namesake_of);
  const PAIRS t = translated(plain.sides[T], namesake_of);
  EXPECT_EQ(world.numbers(map.translate_reference_vector(world.set())), r);
  EXPECT_EQ(world.numbers(map.translate_transformed_vector(world.set())), t);
  if (once_in(2)) {
    subject.map.emplace(map.translate_reference_vector(world.set()), map.translate_transformed_vector(world.set()),
                        map.get_elim_status());
    plain.sides[R] = r;
    plain.sides[T] = t;
    plain.fsm = false;
    plain.table = TABLE::of_kept_register();
  } else {
    subject.map.emplace(REAL_MAP(map));
  }
  expect(true, true);
}

// ---- Questions, which change nothing ----

void TransformationModel::ask(const SUBJECT& subject, const SUBJECT& other) {
  m_operation += ", then asked";
  const unsigned index = below(MOST_INDICES + 2);
  ask_for_registers(subject, index);
  ask_for_groups(subject, R, index);
  ask_for_groups(subject, T, index);
  const unsigned t_index = below(3);
  const bool positive = below(2) == 0;
  EXPECT_EQ(
      subject.map->register_association_is_unate(index, t_index, positive ? KPT_POSITIVE_UNATE : KPT_NEGATIVE_UNATE),
      subject.plain.is_unate(index, t_index, positive));
  ask_for_the_whole(subject, other);
  expect(true, true);
}

void TransformationModel::ask_for_registers(const SUBJECT& subject, unsigned index) {
  const REAL_MAP& map = *subject.map;
  const MAP& plain = subject.plain;
  const auto i = static_cast<unsigned short>(index);
  EXPECT_EQ(world.numbers(map.get_r_representative_equivalents(i)), plain.equivalents(R, index, false, m_lines));
  EXPECT_EQ(world.numbers(map.get_t_representative_equivalents(i)), plain.equivalents(T, index, false, m_lines));
  EXPECT_EQ(world.numbers(map.get_r_representative_inverted_equivalents(i)),
            plain.equivalents(R, index, true, m_lines));
  EXPECT_EQ(world.numbers(map.get_t_representative_inverted_equivalents(i)),
            plain.equivalents(T, index, true, m_lines));
  EXPECT_EQ(world.numbers(map.get_r_registers_at_index(i)), plain.registers(R, index, m_lines));
  EXPECT_EQ(world.numbers(map.get_t_registers_at_index(i)), plain.registers(T, index, m_lines));
  EXPECT_EQ(world.number(map.get_r_representative(i)), plain.representative(R, index).value_or(NONE));
  EXPECT_EQ(world.number(map.get_t_representative(i)), plain.representative(T, index).value_or(NONE));
}

void TransformationModel::ask_for_groups(const SUBJECT& subject, SIDE side, unsigned index) {
  const REAL_MAP& map = *subject.map;
  const std::size_t keypoint = likely_keypoint(subject.plain, side);
  KPT_KEYPOINT* pointer = world.pointer(keypoint);
  bool found = false;
  EXPECT_EQ(side == R ? map.find_index_in_r_vector(pointer, &found) : map.find_index_in_t_vector(pointer, &found), 0);
  EXPECT_EQ(found, subject.plain.lists(side, keypoint));
  const PAIR pair = subject.plain.pair(side, index);
  EXPECT_EQ(
      side == R ? map.r_representative_is_in_n_group_of_map(index) : map.t_representative_is_in_n_group_of_map(index),
      !pair.n.empty());
  EXPECT_EQ(
      side == R ? map.r_representative_is_in_i_group_of_map(index) : map.t_representative_is_in_i_group_of_map(index),
      pair.n.empty() && !pair.i.empty());
  EXPECT_EQ(side == R ? map.keypoint_is_in_r_n_group_of_map(pointer, index)
                      : map.keypoint_is_in_t_n_group_of_map(pointer, index),
            holds(pair.n, keypoint));
  EXPECT_EQ(side == R ? map.keypoint_is_in_r_i_group_of_map(pointer, index)
                      : map.keypoint_is_in_t_i_group_of_map(pointer, index),
            holds(pair.i, keypoint));
}

void TransformationModel::ask_for_the_whole(const SUBJECT& subject, const SUBJECT& other) {
  const REAL_MAP& map = *subject.map;
  const MAP& plain = subject.plain;
  EXPECT_EQ(map.get_number_of_states(), plain.fsm ? plain.table.rows : 2);
  EXPECT_EQ(map.get_num_reference_registers(), plain.sides[R].size());
  EXPECT_EQ(map.get_num_transformed_registers(), plain.sides[T].size());
  EXPECT_EQ(map.r_representative_is_stuck_at_zero(), plain.status == KPT_STUCK_AT_ZERO);
  EXPECT_EQ(map.r_representative_is_stuck_at_one(), plain.status == KPT_STUCK_AT_ONE);
  EXPECT_EQ(map.has_no_fanout(), plain.status == KPT_NO_FANOUT);
  EXPECT_EQ(map.r_representative_is_eliminated(), plain.status == KPT_NOT_ELIMINATED);
  EXPECT_EQ(map.t_equals_r(*other.map), plain.t_equals_r(other.plain, world.keys()));
  EXPECT_EQ(map == *other.map, plain.same_as(other.plain));
  const KEY& key = world.name(below(static_cast<unsigned>(world.count())));
  const KPT_KEYPOINT* namesake = key.signal
                                     ? REAL_MAP::find_register_in_s_vector(map.r_vec(), key.name)
                                     : REAL_MAP::find_register_in_s_vector(map.r_vec(), key.name, key.entity, key.type);
  EXPECT_EQ(world.number(namesake), find_namesake(plain.sides[R], key, world.keys()));
}

// ---- The run ----

void TransformationModel::compare(const SUBJECT& subject) {
  EXPECT_EQ(world.numbers(subject.map->r_vec()), subject.plain.sides[R]) << m_operation;
  EXPECT_EQ(world.numbers(subject.map->t_vec()), subject.plain.sides[T]) << m_operation;
  EXPECT_EQ(subject.map->map_has_fsm_transformation(), subject.plain.fsm) << m_operation;
  EXPECT_EQ(subject.map->get_elim_status(), subject.plain.status) << m_operation;
  EXPECT_TRUE(subject.map->state_table() == real_table(subject.plain.table)) << m_operation;
}

void TransformationModel::step() {
  SUBJECT& subject = m_subjects[below(SUBJECTS)];
  SUBJECT& other = m_subjects[below(SUBJECTS)];  // sometimes the same one
  if (!subject.map || !other.map || is_too_large(subject.plain) || once_in(40)) {
    create(subject);
    m_operation = "create";
  } else if (once_in(3)) {
    combine(subject, other);
  } else {
    edit(subject);
  }
  compare(subject);
  if (other.map) {
    ask(subject, other);
  }
}

TEST_F(TransformationModel, EveryStepAgreesWithThePlainMap) {
  const int steps = kpt_test::steps(20000);
  for (int number = 0; number < steps && !HasFailure(); ++number) {
    step();
    EXPECT_FALSE(HasFailure()) << "at step " << number << ", " << m_operation << ", seed " << kpt_test::seed();
  }
}

}  // namespace
