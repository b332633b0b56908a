// What compositions say, refuse and report, case by case.
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "db/kpt/kpt.h"
#include "tests/composition/machine_tables.h"
#include "tests/support/host_lines.h"

namespace {

KPT_GROUPS group(std::initializer_list<std::string_view> same, std::initializer_list<std::string_view> inverse = {}) {
  KPT_GROUPS groups;
  for (const std::string_view name : same) {
    groups.same.push_back(name);
  }
  for (const std::string_view name : inverse) {
    groups.inverse.push_back(name);
  }
  return groups;
}

std::string text(const KPT_STRING& string) { return std::string(std::string_view(string)); }

class ComposedStages : public testing::Test {
 protected:
  bool compose(const KPT_COMPOSITION_OPTIONS& options = {}) {
    return all->compose({*first, *second}, options, &report);
  }
  KPT_REGISTER_TRANSFORMATION map(std::string_view name) const {
    return all->get_reference_register_transformation(name);
  }
  std::string word(std::string_view name) const { return kpt_fate_word(map(name).get_fate(0)); }
  std::string error() const { return report.errors.empty() ? "" : text(report.errors.front()); }

  KPT_UNREGISTERED_DB first = KPT_UNREGISTERED_DB::create("first");
  KPT_UNREGISTERED_DB second = KPT_UNREGISTERED_DB::create("second");
  KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
  KPT_COMPOSITION_REPORT report;
};

// The cases in which a union gives a wrong answer or none.

TEST_F(ComposedStages, KeepTheInversionOfARegisterThatALaterStageMerged) {
  first->associate_registers_signal_to_signal("p", "p");
  first->associate_registers_signal_to_signal("q", "q");
  first->set_inverter_retimed_register("q");
  second->associate_registers_signal_to_signal("p", "_0_");
  second->associate_registers_signal_to_signal("q", "q");
  ASSERT_TRUE(second->set_merged_registers("_0_", "q"));
  ASSERT_TRUE(compose());
  EXPECT_EQ(map("q"), map("p"));
  EXPECT_EQ(map("p").get_reference_inverted_equivalents(0).size(), 1U);
  EXPECT_TRUE(map("p").is_positive_unate(0, 0));
}

TEST_F(ComposedStages, TurnAConstantThatALaterStageFoundBehindAnInversion) {
  first->associate_registers_signal_to_signal("q", "q");
  first->set_inverter_retimed_register("q");
  second->associate_registers_signal_to_signal("q", "q");
  second->set_eliminated_register_stuck_at_zero("q");
  ASSERT_TRUE(compose());
  EXPECT_TRUE(map("q").is_stuck_at_one());
  EXPECT_EQ(word("q"), "constant");
}

TEST_F(ComposedStages, LeadAMachineOfTheFirstStageToTheLastNetlist) {
  ASSERT_TRUE(first->associate_registers_fsm_signals({"r1", "r2"}, {"s1", "s2"}, kpt_test::count_to_three()));
  second->associate_registers_signal_to_signal("s1", "last1");
  second->associate_registers_signal_to_signal("s2", "last2");
  ASSERT_TRUE(compose());
  EXPECT_EQ(word("r1"), "machine");
  // r2 and s2 have one value, so they are on both sides of the machine.
  EXPECT_EQ(all->get_transformed_register_transformation("last1"), map("r1"));
  EXPECT_EQ(map("r1").get_number_of_states(), 3);
}

TEST_F(ComposedStages, FeedAMachineOfTheSecondStageFromTheFirstNetlist) {
  first->associate_registers_signal_to_signal("q1", "r1");
  first->associate_registers_signal_to_signal("q2", "r2");
  ASSERT_TRUE(second->associate_registers_fsm_signals({"r1", "r2"}, {"s1", "s2"}, kpt_test::count_to_three()));
  ASSERT_TRUE(compose());
  EXPECT_EQ(word("q1"), "machine");
  EXPECT_EQ(text(map("q1").get_reference(0).get_name()), "q1");
}

TEST_F(ComposedStages, CallARegisterUnknownWhoseSuccessorALaterStageLost) {
  first->associate_registers_signal_to_signal("p", "p");
  first->associate_registers_signal_to_signal("q", "q");
  second->associate_registers_signal_to_signal("p", "p");
  ASSERT_TRUE(compose());
  EXPECT_EQ(word("p"), "mapped");
  EXPECT_TRUE(map("q").is_null());
  EXPECT_EQ(word("q"), "unknown");
}

TEST_F(ComposedStages, CallARegisterWithoutFanoutWhenEveryCopyIs) {
  first->associate_registers_signal_to_signal("q", "q");
  first->set_replicated_registers("q", "copy");
  second->associate_registers_signal_to_signal("q", "q");
  second->associate_registers_signal_to_signal("copy", "copy");
  second->set_eliminated_register_no_fanout("q");
  second->set_eliminated_register_no_fanout("copy");
  ASSERT_TRUE(compose());
  EXPECT_EQ(word("q"), "without fanout");
}

TEST_F(ComposedStages, MarkAMapOfWhichACopyWasLost) {
  first->associate_registers_signal_to_signal("q", "q");
  first->set_replicated_registers("q", "copy");
  second->associate_registers_signal_to_signal("q", "q");
  ASSERT_TRUE(compose());
  EXPECT_EQ(word("q"), "mapped");
  EXPECT_EQ(text(map("q").get_attribute("partial")), "yes");
}

// Block instances, and the attributes of maps.

TEST_F(ComposedStages, FollowBlockInstances) {
  ASSERT_TRUE(first->associate_registers_signal_to_instance("q", "u1", "dff", "reg"));
  ASSERT_TRUE(second->associate_registers_instance_to_instance("u1", "dff", "reg", "u2", "dffr", "reg"));
  ASSERT_TRUE(compose());
  EXPECT_EQ(text(map("q").get_transformed(0).get_name()), "u2");
  EXPECT_EQ(text(map("q").get_transformed(0).get_entity_name()), "dffr");
}

TEST_F(ComposedStages, HandOnPassesAndTheLeastCertainStatus) {
  first->associate_groups({group({"q"})}, {group({"q"})}).add_attribute("pass", "opt_dff");
  first->get_reference_register_transformation("q").add_attribute("status", "proved");
  second->associate_groups({group({"q"})}, {group({"last"})}).add_attribute("pass", "fsm");
  second->get_reference_register_transformation("q").add_attribute("status", "claimed");
  ASSERT_TRUE(compose());
  EXPECT_EQ(text(map("q").get_attribute("pass")), "opt_dff, fsm");
  EXPECT_EQ(text(map("q").get_attribute("status")), "claimed");
}

TEST_F(ComposedStages, HandOnEachPassOnce) {
  first->associate_registers_signal_to_signal("q", "q");
  first->get_reference_register_transformation("q").add_attribute("pass", "opt_dff, , opt_merge");
  second->associate_registers_signal_to_signal("q", "q");
  second->get_reference_register_transformation("q").add_attribute("pass", "opt_merge, abc");
  ASSERT_TRUE(compose());
  EXPECT_EQ(text(map("q").get_attribute("pass")), "opt_dff, opt_merge, abc");
}

TEST_F(ComposedStages, HaveNoStatusWhereNoFactHasOne) {
  first->associate_groups({group({"q"})}, {group({"q"})}).add_attribute("pass", "opt_dff");
  second->associate_registers_signal_to_signal("q", "last");
  ASSERT_TRUE(compose());
  EXPECT_EQ(text(map("q").get_attribute("pass")), "opt_dff");
  EXPECT_EQ(text(map("q").get_attribute("status")), "");
}

TEST_F(ComposedStages, TakeAFactWithoutAStatusForClaimed) {
  first->associate_groups({group({"q"})}, {group({"q"})}).add_attribute("status", "proved");
  second->associate_registers_signal_to_signal("q", "last");
  ASSERT_TRUE(compose());
  EXPECT_EQ(text(map("q").get_attribute("status")), "claimed");
}

TEST_F(ComposedStages, TakeRegistersThatAreNotMentionedForKeptWhenToldTo) {
  first->associate_registers_signal_to_signal("a", "b");
  second->associate_registers_signal_to_signal("c", "d");
  ASSERT_TRUE(compose({0.5, true}));
  EXPECT_EQ(text(map("a").get_transformed(0).get_name()), "b");
  EXPECT_EQ(text(map("c").get_transformed(0).get_name()), "d");
}

// Reports and refusals.

// The second stage does not mention the register.
TEST_F(ComposedStages, FollowARegisterPastAStageThatDoesNotMentionIt) {
  const KPT_UNREGISTERED_DB third = KPT_UNREGISTERED_DB::create("third");
  first->associate_registers_signal_to_signal("q", "q1");
  second->associate_registers_signal_to_signal("p", "p");
  third->associate_registers_signal_to_signal("q1", "q2");
  KPT_COMPOSITION_OPTIONS options;
  options.keeps_unrecorded = true;
  ASSERT_TRUE(all->compose({*first, *second, *third}, options, &report));
  EXPECT_EQ(text(map("q").get_transformed(0).get_name()), "q2");
}

TEST_F(ComposedStages, TellHowWellTheyFit) {
  first->associate_registers_signal_to_signal("a", "b");
  second->associate_registers_signal_to_signal("b", "c");
  second->associate_registers_signal_to_signal("new", "c2");
  ASSERT_TRUE(compose());
  ASSERT_EQ(report.fits.size(), 1U);
  EXPECT_EQ(text(report.fits[0]), "stage 2 starts from 2 registers, 1 of them known to stage 1");
}

TEST_F(ComposedStages, AreRefusedWhenTheyDoNotFollowEachOther) {
  first->associate_registers_signal_to_signal("b", "c");
  second->associate_registers_signal_to_signal("a", "b");
  EXPECT_FALSE(compose());
  EXPECT_EQ(error(), "stage 2 does not follow stage 1: stage 2 starts from 1 registers, 0 of them known to stage 1");
  EXPECT_EQ(all->get_reference_set().size(), 0U);
}

TEST_F(ComposedStages, AreRefusedWhenTheyContradictEachOther) {
  first->associate_registers_signal_to_signal("q", "q");
  first->set_replicated_registers("q", "copy");
  second->associate_groups({group({"q"}, {"copy"})}, {group({"q"})});
  EXPECT_FALSE(compose());
  EXPECT_EQ(error(),
            "stages 1 and 2 say that these are equal and inverse: \"q\" of netlist 2 and \"copy\" of netlist 2");
  EXPECT_EQ(all->get_reference_set().size(), 0U);
}

TEST_F(ComposedStages, AreRefusedWhenTheySayTwoValuesOfARegister) {
  first->associate_groups({group({"p", "q"})}, {group({"p", "q"})});
  second->associate_groups({group({"p"})}, {}, KPT_STUCK_AT_ZERO);
  second->associate_groups({group({"q"})}, {}, KPT_STUCK_AT_ONE);
  EXPECT_FALSE(compose());
  EXPECT_EQ(error(), "stages 1 and 2 say 0 and 1 of \"q\" of netlist 2");
}

TEST_F(ComposedStages, NameTheOneStageThatContradictsItself) {
  first->add_groups_as_they_are({group({"q"}, {"q"})}, {group({"q"})}, nullptr);
  second->associate_registers_signal_to_signal("q", "last");
  EXPECT_FALSE(compose());
  EXPECT_EQ(error(), "the maps of stage 1 say 0 and 1 of \"q\" of netlist 1");
}

TEST_F(ComposedStages, AreNotWrittenIntoADatabaseThatHoldsSomething) {
  all->associate_registers_signal_to_signal("a", "b");
  EXPECT_FALSE(compose());
  EXPECT_EQ(error(), "the database that is to hold the composition is not empty");
}

TEST_F(ComposedStages, AreNotWrittenIntoADatabaseWithATransformedRegister) {
  all->add_register_without_map(KPT_TRANSFORMED_SET, std::string_view("b"));
  EXPECT_FALSE(compose());
  EXPECT_EQ(error(), "the database that is to hold the composition is not empty");
}

TEST_F(ComposedStages, AreNotWrittenIntoOneOfThemselves) {
  EXPECT_FALSE(all->compose({*all}, {}, &report));
  EXPECT_EQ(error(), "the database that is to hold the composition is not empty");
}

TEST_F(ComposedStages, AreRefusedWhenThereAreNone) {
  EXPECT_FALSE(all->compose(KPT_KEYPOINTS_DB_LIST(), {}, &report));
  EXPECT_EQ(error(), "there are no stages");
}

TEST_F(ComposedStages, WarnOfAMachineWhoseTableEventsHaveBroken) {
  KPT_STATE_TABLE table(2, 1, 1);
  table.set_reference_entry(2, 1, true);
  table.set_transformed_entry(2, 1, true);
  ASSERT_TRUE(first->associate_registers_fsm_signals({"r"}, {"s"}, table));
  ASSERT_TRUE(first->set_eliminated_register_stuck_at_zero("s"));
  ASSERT_TRUE(compose());
  ASSERT_EQ(report.warnings.size(), 1U);
  EXPECT_EQ(text(report.warnings[0]),
            "1 machines have tables that do not fit them and say nothing: of stage 1, with \"r\" of netlist 1");
  EXPECT_EQ(word("r"), "unknown");
}

TEST_F(ComposedStages, HandOnThatAMachineDoesNotShowAllCopies) {
  KPT_STATE_TABLE table(2, 1, 1);
  table.set_reference_entry(2, 1, true);
  table.set_transformed_entry(2, 1, true);
  ASSERT_TRUE(first->associate_registers_fsm_signals({"p"}, {"t"}, table));
  ASSERT_TRUE(first->associate_registers_fsm_signals({"q"}, {"u"}, table));
  first->get_reference_register_transformation("q").add_attribute("partial", "yes");
  ASSERT_TRUE(all->compose({*first}));
  EXPECT_EQ(text(map("p").get_attribute("partial")), "");
  EXPECT_EQ(text(map("q").get_attribute("partial")), "yes");
}

// The column of a bit is the value of its first register that is not inverted.
// When that register is removed and inverted replicas stay, the event does not
// change the column, which is then the inverse of each replica.
TEST_F(ComposedStages, SayNothingOfAMachineOfWhoseBitInvertedReplicasAloneStay) {
  ASSERT_TRUE(first->associate_registers_fsm_signals({"r1", "r2"}, {"s1", "s2"}, kpt_test::count_to_three()));
  ASSERT_TRUE(first->set_replicated_registers("s1", "copy"));
  ASSERT_TRUE(first->set_inverter_retimed_register("copy"));
  EXPECT_EQ(first->get_reference_register_transformation("r1").get_fate(0), KPT_FATE_MACHINE);
  ASSERT_TRUE(first->set_eliminated_register_no_fanout("s1"));
  const KPT_REGISTER_TRANSFORMATION machine = first->get_reference_register_transformation("r1");
  EXPECT_EQ(text(machine.get_attribute("partial")), "table");
  EXPECT_EQ(machine.get_fate(0), KPT_FATE_UNKNOWN);
  second->associate_registers_signal_to_signal("copy", "copy");
  second->associate_registers_signal_to_signal("s2", "s2");
  ASSERT_TRUE(compose());
  EXPECT_EQ(report.warnings.size(), 1U);
  EXPECT_EQ(word("r1"), "unknown");
}

TEST_F(ComposedStages, GoOnReadingAMachineOfWhoseBitAReplicaWithTheSameValueStays) {
  KPT_STATE_TABLE table(2, 1, 1);
  table.set_reference_entry(2, 1, true);
  table.set_transformed_entry(2, 1, true);
  ASSERT_TRUE(first->associate_registers_fsm_signals({"r"}, {"s"}, table));
  ASSERT_TRUE(first->set_replicated_registers("s", "copy"));
  ASSERT_TRUE(first->set_eliminated_register_no_fanout("s"));
  second->associate_registers_signal_to_signal("copy", "last");
  ASSERT_TRUE(compose());
  EXPECT_EQ(report.warnings.size(), 0U);
  EXPECT_EQ(text(map("r").get_transformed(0).get_name()), "last");
}

// Maps of any shape.

TEST(Groups, AreRecordedAsOneMap) {
  const KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("db");
  KPT_GROUPS with_instance = group({"t"});
  with_instance.inverse.push_back({"u1", "dff", "reg"});
  const KPT_REGISTER_TRANSFORMATION map = db->associate_groups({group({"p"}, {"q"})}, {with_instance});
  ASSERT_FALSE(map.is_null());
  EXPECT_EQ(map, db->get_reference_register_transformation("q"));
  EXPECT_EQ(text(map.get_transformed_group(0, true)[0].get_entity_name()), "dff");
}

TEST(Groups, AreRefusedWholeWhenARegisterExists) {
  const KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("db");
  db->associate_registers_signal_to_signal("p", "t");
  EXPECT_TRUE(db->associate_groups({group({"q"})}, {group({"t2", "t"})}).is_null());
  EXPECT_EQ(db->get_reference_set().size(), 1U);
  EXPECT_EQ(db->get_transformed_set().size(), 1U);
}

// What a refused map's debug line says of the reason.
class RefusedGroups : public testing::Test {
 protected:
  void expect_refused(const KPT_REGISTER_TRANSFORMATION& map, const std::string& reason) {
    EXPECT_TRUE(map.is_null());
    EXPECT_THAT(lines.take_debug(), testing::ElementsAre("Error: Map not recorded: " + reason));
    EXPECT_TRUE(db->get_reference_set().size() == 0 && db->get_transformed_set().size() == 0);
  }

  KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("db");
  kpt_test::HOST_LINES lines;
};

TEST_F(RefusedGroups, NameARegisterTwice) {
  expect_refused(db->associate_groups({group({"q"}, {"q"})}, {group({"t"})}), "it names q twice");
}

TEST_F(RefusedGroups, HaveATableOfAnotherSize) {
  const char* const reason = "its table has not its size";
  expect_refused(db->associate_groups({group({"q"})}, {group({"t"})}, KPT_STATE_TABLE(2, 1, 2)), reason);
  expect_refused(db->associate_groups({group({"q"})}, {group({"t"})}, KPT_STATE_TABLE(2, 2, 1)), reason);
}

TEST_F(RefusedGroups, HaveATableWithoutARow) {
  expect_refused(db->associate_groups({group({"q"})}, {group({"t"})}, KPT_STATE_TABLE(0, 1, 1)),
                 "its table has no row");
}

TEST_F(RefusedGroups, HaveSeveralIndicesAndNoTable) {
  const char* const reason = "it has several indices and no table";
  expect_refused(db->associate_groups({group({"q"}), group({"q2"})}, {group({"t"})}), reason);
  expect_refused(db->associate_groups({group({"q"})}, {group({"t"}), group({"t2"})}), reason);
}

TEST_F(RefusedGroups, HaveMoreIndicesThanATableHasColumns) {
  const char* const reason = "it has too many indices";
  const KPT_GROUPS_SIDE many(65536, group({"q"}));
  expect_refused(db->associate_groups(many, {group({"t"})}, KPT_STATE_TABLE(1, 0, 1)), reason);
  expect_refused(db->associate_groups({group({"t"})}, many, KPT_STATE_TABLE(1, 1, 0)), reason);
}

TEST_F(RefusedGroups, HaveATableThatContradictsTheirStatus) {
  const char* const reason = "its table contradicts its status";
  expect_refused(db->associate_groups({group({"q"})}, {group({"t"})}, KPT_STATE_TABLE(1, 1, 1), KPT_STUCK_AT_ONE),
                 reason);
  expect_refused(db->associate_groups({}, {group({"t"})}, KPT_STATE_TABLE(1, 0, 1), KPT_STUCK_AT_ZERO), reason);
  EXPECT_FALSE(
      db->associate_groups({group({"q"})}, {group({"t"})}, KPT_STATE_TABLE(1, 1, 1), KPT_STUCK_AT_ZERO).is_null());
}

TEST_F(RefusedGroups, HaveAStatusThatIsUnknown) {
  for (const int status : {-1, 5}) {
    expect_refused(db->associate_groups({group({"q"})}, {group({"t"})}, static_cast<KPT_ELIM_ENUM>(status)),
                   "its status is unknown");
  }
}

TEST_F(RefusedGroups, NameNoRegister) { expect_refused(db->associate_groups({group({})}, {}), "it names no register"); }

TEST(Groups, MayBeInvertedAlone) {
  const KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("db");
  EXPECT_FALSE(db->associate_groups({group({}, {"q"})}, {}, KPT_STUCK_AT_ZERO).is_null());
  EXPECT_FALSE(db->associate_groups({}, {group({}, {"t"})}).is_null());
}

TEST(Groups, AreAddedAsTheyAreWithATableOfAnySize) {
  const KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("db");
  const KPT_STATE_TABLE table(3, 2, 5);
  const KPT_REGISTER_TRANSFORMATION map = db->add_groups_as_they_are({group({"q"})}, {group({"t"})}, &table);
  EXPECT_TRUE(map.has_fsm());
  EXPECT_EQ(map.get_number_of_states(), 3);
  EXPECT_EQ(map.get_fate(0), KPT_FATE_UNKNOWN);
}

TEST(Register, WithoutAMapIsAddedOnce) {
  const KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("db");
  EXPECT_EQ(text(db->add_register_without_map(KPT_REFERENCE_SET, std::string_view("q")).get_name()), "q");
  EXPECT_TRUE(db->add_register_without_map(KPT_REFERENCE_SET, std::string_view("q")).is_null());
  EXPECT_EQ(db->get_reference_set().size(), 1U);
}

// Attributes in files.

class AttributesInAFile : public testing::Test {
 protected:
  AttributesInAFile() {
    db->associate_registers_signal_to_instance("q", "u1", "dff", "reg");
    db->get_reference_register_transformation("q").add_attribute("pass", "opt_dff");
    db->get_reference_register_transformation("q").add_attribute("partial", "yes");
    db->get_reference_set().get_register("q").add_attribute("note", "of the first netlist");
    db->get_transformed_set().get_register("u1", "dff", "reg").add_attribute("note", "of the last netlist");
  }
  ~AttributesInAFile() override { std::remove(file.c_str()); }

  KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("db");
  const std::string file = testing::TempDir() + "kpt_attributes_" + std::to_string(getpid()) + ".xml";
};

TEST_F(AttributesInAFile, ComeBackFromASaveThatIsAtomic) {
  ASSERT_TRUE(db.save_atomically(file));
  const KPT_UNREGISTERED_DB loaded = KPT_UNREGISTERED_DB::load(file);
  ASSERT_FALSE(loaded.is_null());
  const KPT_REGISTER_TRANSFORMATION map = loaded->get_reference_register_transformation("q");
  EXPECT_EQ(map.get_attributes(), db->get_reference_register_transformation("q").get_attributes());
  EXPECT_EQ(map.get_attributes().size(), 2U);
  EXPECT_EQ(text(map.get_reference(0).get_attribute("note")), "of the first netlist");
  EXPECT_EQ(text(map.get_transformed(0).get_attribute("note")), "of the last netlist");
}

TEST_F(AttributesInAFile, AreNotWrittenByAPlainSave) {
  ASSERT_TRUE(db.save(file));
  const KPT_UNREGISTERED_DB loaded = KPT_UNREGISTERED_DB::load(file);
  ASSERT_FALSE(loaded.is_null());
  EXPECT_TRUE(loaded->get_reference_register_transformation("q").get_attributes().empty());
  EXPECT_TRUE(loaded->get_reference_set().get_register("q").get_attributes().empty());
}

TEST_F(AttributesInAFile, ChangeNothingElse) {
  ASSERT_TRUE(db.save_atomically(file));
  const KPT_UNREGISTERED_DB with = KPT_UNREGISTERED_DB::load(file);
  ASSERT_TRUE(with.save(file));
  std::ifstream from_with(file);
  const std::string text_with{std::istreambuf_iterator<char>(from_with), {}};
  ASSERT_TRUE(db.save(file));
  std::ifstream from_without(file);
  const std::string text_without{std::istreambuf_iterator<char>(from_without), {}};
  EXPECT_EQ(text_with, text_without);
}

TEST_F(AttributesInAFile, AreRefusedWhenAFileCannotHoldThem) {
  db->get_reference_register_transformation("q").add_attribute("note", "a \x01 b");
  EXPECT_FALSE(db.save_atomically(file));
}

TEST_F(AttributesInAFile, AreRefusedWhenAFileCannotHoldThoseOfARegister) {
  db->get_reference_set().get_register("q").add_attribute("note", "a \x01 b");
  EXPECT_FALSE(db.save_atomically(file));
}

// A file has no place for them, and an absent attribute is empty as well.
TEST_F(AttributesInAFile, AreNotWrittenWhenTheyAreEmpty) {
  db->get_reference_set().get_register("q").add_attribute("empty", "");
  db->get_reference_set().get_register("q").add_attribute("", "without a name");
  ASSERT_TRUE(db.save_atomically(file));
  const KPT_UNREGISTERED_DB loaded = KPT_UNREGISTERED_DB::load(file);
  ASSERT_FALSE(loaded.is_null());
  EXPECT_EQ(loaded->get_reference_set().get_register("q").get_attributes().size(), 1U);
}

}  // namespace
