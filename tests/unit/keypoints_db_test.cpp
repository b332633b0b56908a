// The database: its parts, its ids, its look-ups, and its handle.
#include "db/kpt/kpt_keypoints_db.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "tests/support/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/index_checker.h"

namespace {

using kpt_test::DATABASE;
using kpt_test::HOST_LINES;
using kpt_test::index_differences;
using kpt_test::make_table;
using kpt_test::STATES;
using kpt_test::states_of;
using testing::ElementsAre;
using testing::IsEmpty;

class KeypointsDb : public testing::Test {
 protected:
  DATABASE db{"stage"};
  HOST_LINES lines;
};

// --- core ---

TEST_F(KeypointsDb, StartsEmptyUnderItsName) {
  EXPECT_EQ(db.impl().get_db_name(), "stage");
  EXPECT_TRUE(db.impl().get_reference_set()->is_empty());
  EXPECT_TRUE(db.impl().get_transformed_set()->is_empty());
  EXPECT_THAT(db.maps(), IsEmpty());
}

TEST_F(KeypointsDb, NameIsACopyOfAnyBytes) {
  std::string name("a\0b \xff<&>", 8);
  const DATABASE other(name);
  name[0] = 'z';
  EXPECT_EQ(std::string(other->get_name()), std::string("a\0b \xff<&>", 8));
}

TEST_F(KeypointsDb, NameMayBeEmpty) {
  const DATABASE other("");
  EXPECT_EQ(other->get_name(), "");
}

TEST_F(KeypointsDb, TheTwoSetsAreNotOne) { EXPECT_NE(db.impl().get_reference_set(), db.impl().get_transformed_set()); }

TEST_F(KeypointsDb, IdsOfEachSideCountOnAcrossDatabases) {
  const DATABASE other;
  const long r = KPT_KEYPOINTS_DB_IMPL::s_r_id;
  const long t = KPT_KEYPOINTS_DB_IMPL::s_t_id;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(other->associate_registers_signal_to_signal("a", "x"));
  ASSERT_TRUE(other->set_replicated_registers("x", "y"));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "y"));
  EXPECT_EQ(db.r("a")->get_kpid(), r);
  EXPECT_EQ(other.r("a")->get_kpid(), r + 1);
  EXPECT_EQ(db.r("b")->get_kpid(), r + 2);
  EXPECT_EQ(db.t("x")->get_kpid(), t);
  EXPECT_EQ(other.t("x")->get_kpid(), t + 1);
  EXPECT_EQ(other.t("y")->get_kpid(), t + 2);
  EXPECT_EQ(db.t("y")->get_kpid(), t + 3);
}

TEST_F(KeypointsDb, RefusedEventDrawsNoId) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  const long r = KPT_KEYPOINTS_DB_IMPL::s_r_id;
  const long t = KPT_KEYPOINTS_DB_IMPL::s_t_id;
  EXPECT_FALSE(db->associate_registers_signal_to_signal("a", "y"));
  EXPECT_FALSE(db->associate_registers_signal_to_signal("b", "x"));
  EXPECT_FALSE(db.fsm("c a", "y", {"00 0"}));
  EXPECT_FALSE(db->set_replicated_registers("none", "y"));
  EXPECT_FALSE(db->set_replicated_registers("x", "x"));
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, r);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_t_id, t);
}

TEST_F(KeypointsDb, CounterIsReadBeforeItIsRaised) {
  const long r = KPT_KEYPOINTS_DB_IMPL::s_r_id;
  const long t = KPT_KEYPOINTS_DB_IMPL::s_t_id;
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::get_next_r_id(), r);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::get_next_r_id(), r + 1);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::get_next_t_id(), t);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_t_id, t + 1);
}

TEST_F(KeypointsDb, RegistersAreAddedWithTheIdGivenAndNoCheck) {
  const long r = KPT_KEYPOINTS_DB_IMPL::s_r_id;
  KPT_REGISTER_KEYPOINT_IMPL* first = db.impl().add_to_register_set(KPT_REFERENCE_SET, 41, "a");
  KPT_REGISTER_KEYPOINT_IMPL* second = db.impl().add_to_register_set(KPT_REFERENCE_SET, 41, "a");
  EXPECT_EQ(first->get_kpid(), 41);
  EXPECT_EQ(db.r("a"), second);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, r);
  EXPECT_TRUE(db.impl().get_transformed_set()->is_empty());
}

TEST_F(KeypointsDb, AnyOtherSideThanTheReferenceOneMeansTheTransformedOne) {
  KPT_REGISTER_KEYPOINT_IMPL* x = db.impl().add_to_register_set(KPT_TRANSFORMED_SET, 1, "x");
  KPT_REGISTER_KEYPOINT_IMPL* y = db.impl().add_to_register_set(static_cast<KPT_SET_ENUM>(7), 2, "y");
  EXPECT_EQ(db.t("x"), x);
  EXPECT_EQ(db.t("y"), y);
  EXPECT_TRUE(db.impl().get_reference_set()->is_empty());
}

TEST_F(KeypointsDb, BlockInstancesAreAddedWithTheirTexts) {
  KPT_REGISTER_KEYPOINT_IMPL* u = db.impl().add_to_register_set(KPT_TRANSFORMED_SET, 3, "u1", "DFF", "rise");
  EXPECT_TRUE(u->register_is_blockinstance());
  EXPECT_EQ(u->get_entity_name(), "DFF");
  EXPECT_EQ(u->get_register_type(), "rise");
  EXPECT_EQ(db.impl().get_transformed_set()->get_register("u1", "", "rise"), u);
  EXPECT_EQ(db.t("u1"), nullptr);
}

TEST_F(KeypointsDb, MapsAreAddedWithAndWithoutATable) {
  KPT_KEYPOINT* a = db.impl().add_to_register_set(KPT_REFERENCE_SET, 1, "a");
  KPT_KEYPOINT* x = db.impl().add_to_register_set(KPT_TRANSFORMED_SET, 1, "x");
  NI_PAIR_VECTOR r;
  NI_PAIR_VECTOR t;
  r.push_back({{a}, {}});
  t.push_back({{}, {x}});
  KPT_TRANSFORMATION_IMPL* plain = db.impl().add_to_transformation_set(r, t, KPT_STUCK_AT_ONE);
  EXPECT_EQ(plain->get_elim_status(), KPT_STUCK_AT_ONE);
  EXPECT_EQ(db.r_map("a"), plain);
  KPT_TRANSFORMATION_IMPL* machine = db.impl().add_to_transformation_set(r, t, make_table({"0 1"}), KPT_NO_FANOUT);
  EXPECT_TRUE(machine->map_has_fsm_transformation());
  EXPECT_EQ(db.r_map("a"), machine);
  EXPECT_EQ(db.t_map("x"), machine);
  EXPECT_THAT(db.maps(), ElementsAre("a~ -> ~x", "a~ -> ~x"));
  EXPECT_THAT(index_differences(db.impl()), IsEmpty());
}

// --- create_state_table_impl ---

TEST_F(KeypointsDb, ClientTableIsConvertedEntryByEntry) {
  const STATES states = {"010 01", "111 10", "000 11", "101 00"};
  const KPT_STATE_TABLE table(make_table(states));
  EXPECT_EQ(states_of(db.impl().create_state_table_impl(table)), states);
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(KeypointsDb, TableWithoutStatesIsConvertedToAnEmptyOne) {
  const KPT_STATE_TABLE_IMPL table = db.impl().create_state_table_impl(KPT_STATE_TABLE(0, 2, 3));
  EXPECT_EQ(table.get_num_states(), 0);
  EXPECT_EQ(table.get_num_reference_registers(), 2);
  EXPECT_EQ(table.get_num_transformed_registers(), 3);
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(KeypointsDb, TableWithoutColumnsIsConverted) {
  const KPT_STATE_TABLE_IMPL table = db.impl().create_state_table_impl(KPT_STATE_TABLE(3, 0, 0));
  EXPECT_EQ(states_of(table), (STATES{" ", " ", " "}));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(KeypointsDb, ConvertedTableIsIndependentOfTheClients) {
  KPT_STATE_TABLE table(make_table({"0 0"}));
  const KPT_STATE_TABLE_IMPL converted = db.impl().create_state_table_impl(table);
  table.set_reference_entry(1, 1, true);
  EXPECT_EQ(states_of(converted), (STATES{"0 0"}));
}

TEST_F(KeypointsDb, TableOfTheMostStatesThatThereAreIsConverted) {
  KPT_STATE_TABLE table(65535, 1, 1);
  ASSERT_TRUE(table.set_transformed_entry(65535, 1, true));
  const KPT_STATE_TABLE_IMPL converted = db.impl().create_state_table_impl(table);
  EXPECT_EQ(converted.get_num_states(), 65535);
  EXPECT_EQ(converted.get_transformed_entry(65535, 1), 1);
  EXPECT_EQ(converted.get_transformed_entry(65534, 1), 0);
}

// --- lookups ---

TEST_F(KeypointsDb, UnknownNameHasNoTransformation) {
  EXPECT_EQ(db.r_map("a"), nullptr);
  EXPECT_EQ(db.t_map("x"), nullptr);
}

TEST_F(KeypointsDb, NameIsLookedUpOnItsOwnSideOnly) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_EQ(db.of_r("a"), "a~ -> x~");
  EXPECT_EQ(db.of_t("x"), "a~ -> x~");
  EXPECT_EQ(db.r_map("x"), nullptr);
  EXPECT_EQ(db.t_map("a"), nullptr);
}

TEST_F(KeypointsDb, RegisterWithoutAMapHasNoTransformation) {
  db.impl().add_to_register_set(KPT_REFERENCE_SET, 1, "a");
  db.impl().add_to_register_set(KPT_TRANSFORMED_SET, 1, "x");
  EXPECT_EQ(db.r_map("a"), nullptr);
  EXPECT_EQ(db.t_map("x"), nullptr);
}

TEST_F(KeypointsDb, NamesAreCaseSensitiveAndMayHoldAnyByte) {
  const std::string zero("q\0q", 3);
  ASSERT_TRUE(db->associate_registers_signal_to_signal("Q", zero));
  EXPECT_EQ(db.r_map("q"), nullptr);
  EXPECT_EQ(db.t_map("q"), nullptr);
  EXPECT_NE(db.t_map(zero), nullptr);
}

// --- the handle ---

TEST_F(KeypointsDb, HandleGivesTheNameAndTheSets) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_EQ(db->get_name(), "stage");
  EXPECT_FALSE(db->get_reference_set().get_register("a").is_null());
  EXPECT_FALSE(db->get_transformed_set().get_register("x").is_null());
  EXPECT_TRUE(db->get_reference_set().get_register("x").is_null());
  EXPECT_EQ(db->get_transformation_set().get_list_of_register_transformations().size(), 1U);
}

TEST_F(KeypointsDb, HandleGivesANullHandleForAnUnknownName) {
  EXPECT_TRUE(db->get_reference_register_transformation("a").is_null());
  EXPECT_TRUE(db->get_transformed_register_transformation("x").is_null());
}

TEST_F(KeypointsDb, HandleGivesTheMapOfARegister) {
  ASSERT_TRUE(db->associate_registers_signal_to_signal("a", "x"));
  EXPECT_EQ(db->get_reference_register_transformation("a").get_transformed(0).get_name(), "x");
  EXPECT_EQ(db->get_transformed_register_transformation("x").get_reference(0).get_name(), "a");
}

TEST_F(KeypointsDb, CopiesOfAHandleAreTheSameDatabase) {
  const KPT_KEYPOINTS_DB first(&db.impl());
  const KPT_KEYPOINTS_DB second = first;  // NOLINT(performance-unnecessary-copy-initialization)
  ASSERT_TRUE(first.associate_registers_signal_to_signal("a", "x"));
  EXPECT_FALSE(second.associate_registers_signal_to_signal("a", "x"));
}

TEST_F(KeypointsDb, HandleWithoutADatabaseIsNull) {
  EXPECT_TRUE(KPT_KEYPOINTS_DB().is_null());
  EXPECT_TRUE(KPT_KEYPOINTS_DB(nullptr).is_null());
  EXPECT_FALSE(KPT_KEYPOINTS_DB(&db.impl()).is_null());
}

TEST(KeypointsDbEnd, DeletingAnswersTrueThenFalse) {
  KPT_KEYPOINTS_DB handle(new KPT_KEYPOINTS_DB_IMPL("d"));
  EXPECT_TRUE(handle.delete_keypoints_db());
  EXPECT_TRUE(handle.is_null());
  EXPECT_FALSE(handle.delete_keypoints_db());
}

TEST(KeypointsDbEnd, DeletingANullHandleIsFalse) {
  KPT_KEYPOINTS_DB handle;
  EXPECT_FALSE(handle.delete_keypoints_db());
}

TEST(KeypointsDbEnd, DeletingLeavesCopiesOfTheHandleAsTheyWere) {
  KPT_KEYPOINTS_DB handle(new KPT_KEYPOINTS_DB_IMPL("d"));
  const KPT_KEYPOINTS_DB copy = handle;
  handle.delete_keypoints_db();
  EXPECT_FALSE(copy.is_null());
}

TEST(KeypointsDbEnd, EverythingThatWasRecordedIsFreed) {
  KPT_KEYPOINTS_DB handle(new KPT_KEYPOINTS_DB_IMPL("d"));
  const std::string longer(100, 'n');
  handle.associate_registers_instance_to_instance(longer, longer, longer, longer, longer, longer);
  handle.associate_registers_signal_to_signal(longer, longer + "1");
  handle.set_replicated_registers(longer + "1", longer + "2");
  handle.set_eliminated_register_no_fanout(longer + "1");
  handle.associate_registers_fsm_signals(kpt_test::names("a b a"), kpt_test::names("x x"),
                                         KPT_STATE_TABLE(make_table({"000 00", "111 11"})));
  const KPT_REGISTER_KEYPOINT_LIST registers = handle.get_reference_set().get_list_of_registers();
  ASSERT_FALSE(registers.empty());
  registers.front().add_attribute("note", longer);
  handle.get_reference_register_transformation("b").add_attribute("note", longer);
  EXPECT_TRUE(handle.delete_keypoints_db());
}

// The memory of the library's own objects is zero-filled.
template <class T>
class ZeroFilled : public testing::Test {};
using LARGE_OBJECTS = testing::Types<KPT_KEYPOINTS_DB_IMPL, KPT_KEYPOINT_SET_IMPL, KPT_TRANSFORMATION_SET_IMPL>;
TYPED_TEST_SUITE(ZeroFilled, LARGE_OBJECTS);

TYPED_TEST(ZeroFilled, MemoryForAnObject) {
  void* block = TypeParam::operator new(sizeof(TypeParam));
  const auto* bytes = static_cast<const unsigned char*>(block);
  EXPECT_TRUE(std::all_of(bytes, bytes + sizeof(TypeParam), [](unsigned char byte) { return byte == 0; }));
  TypeParam::operator delete(block);
}

}  // namespace
