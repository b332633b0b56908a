// What a load does with each deviation. Every file is small and well-formed; most
// differ in one position from a file of the library.
#include <gmock/gmock.h>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_xml_parser.h"
#include "db/kpt/kpt_xml_reader.h"
#include "tests/format/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/load_outcome.h"

namespace {

using namespace kpt_test;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

constexpr char NO_VALUES[] = "Parse error while reading statetable column number";

std::vector<std::string> maps_of(const std::string& name) { return maps(*load_data(name).db); }
std::vector<std::string> reference_registers_of(const std::string& name) {
  return registers(*load_data(name).db->get_reference_set());
}

TEST(Load, FramesItsPhasesWithTimingLines) {
  const LOADED loaded{new_database("d"), true};
  const HOST_LINES lines;
  EXPECT_TRUE(KPT_XML_READER().load_kpt_xml(data_file("elim_types.xml"), loaded.db.get()));
  EXPECT_THAT(
      lines.debug(),
      ElementsAre("XML parse: file: " + data_file("elim_types.xml") + ", nerrors: 0", "Start XML parsing",
                  MatchesRegex("TIME: Load Start Time: ..*"), MatchesRegex("TIME: Register Set Load: [0-9]+"),
                  MatchesRegex("TIME: Register Set Load: [0-9]+"),
                  MatchesRegex("TIME: Transformation Set Load: [0-9]+"), MatchesRegex("TIME: Load End Time: ..*")));
  EXPECT_THAT(lines.errors(), IsEmpty());
  EXPECT_THAT(lines.internal_errors(), IsEmpty());
}

TEST(Load, ReadsAnyWordOutsideTheListAndNoneAsNotEliminated) {
  EXPECT_THAT(maps_of("elim_types.xml"), ElementsAre("a~ -> ", "a~ ->  (1)", "a~ ->  (2)", "a~ ->  (3)", "a~ ->  (4)",
                                                     "a~ -> ", "a~ -> ", "a~ -> ", "a~ -> "));
}

TEST(Load, PassesOverChildrenOfATransformationWithoutAType) {
  EXPECT_THAT(maps_of("children_without_type.xml"), ElementsAre("a~ -> x~"));
}

TEST(Load, ReadsASideOfAnyOtherTypeAsTheTransformedOne) {
  EXPECT_THAT(maps_of("sides_of_other_types.xml"), ElementsAre("a~ -> x~|y~"));
}

TEST(Load, AppendsAFurtherPieceOfASide) { EXPECT_THAT(maps_of("side_in_two_pieces.xml"), ElementsAre("a~|~b -> x~")); }

// With both it is a block instance, with neither a signal, with only one of them nothing.
TEST(Load, SkipsAKeypointThatHasEntityOrRegisterTypeAlone) {
  const HOST_LINES lines;
  EXPECT_THAT(reference_registers_of("halves_of_block_instances.xml"),
              ElementsAre("4:signal", "1:whole/u1/dff", "5:empty_texts//"));
  EXPECT_THAT(lines.errors(), IsEmpty());
}

TEST(Load, SkipsKeypointsOfEveryTypeButRegister) {
  EXPECT_THAT(reference_registers_of("other_keypoint_types.xml"), ElementsAre("2:kept"));
}

TEST(Load, KeepsThePlaceOfAnUnknownIdInItsList) {
  EXPECT_THAT(maps_of("unknown_ids.xml"), ElementsAre("a null b~ -> ~null"));
}

TEST(Load, LooksIdsUpWithinTheSideThatNamesThem) {
  EXPECT_THAT(maps_of("ids_within_a_side.xml"), ElementsAre("a b~ -> x null y~"));
}

TEST(Load, ReadsAMissingIdAs0) {
  EXPECT_THAT(reference_registers_of("missing_ids.xml"), ElementsAre("0:zero"));
  EXPECT_THAT(maps_of("missing_ids.xml"), ElementsAre("zero zero zero~ -> "));
}

TEST(Load, ReadsAnIdBeyondAnIntAsTheNearestOne) {
  EXPECT_THAT(reference_registers_of("overflowing_ids.xml"),
              ElementsAre("2147483647:most", "-2147483648:least", "12:twelve"));
  EXPECT_THAT(maps_of("overflowing_ids.xml"), ElementsAre("most least twelve~ -> "));
}

// The load fails as well, because the sets come after the transformations.
TEST(Load, GivesNullKeypointsToTransformationsThatPrecedeTheSets) {
  const LOADED loaded = load_data("transformations_first.xml");
  EXPECT_FALSE(loaded.result);
  EXPECT_THAT(maps(*loaded.db), ElementsAre("null~ -> null~"));
  EXPECT_TRUE(loaded.db->get_reference_set()->is_empty());
}

TEST(Load, GivesNullKeypointsToTransformationsWithoutTheSets) {
  const LOADED loaded = load_data("only_transformations_first.xml");
  EXPECT_TRUE(loaded.result);
  EXPECT_THAT(maps(*loaded.db), ElementsAre("null~ -> null~"));
}

TEST(Load, TakesTheSetsInEitherOrder) {
  const LOADED loaded = load_data("transformed_set_first.xml");
  EXPECT_TRUE(loaded.result);
  EXPECT_THAT(maps(*loaded.db), ElementsAre("a~ -> x~"));
}

TEST(Load, ReadsASetOfAnyOtherTypeAsTheTransformedOne) {
  EXPECT_THAT(registers(*load_data("set_of_unknown_type.xml").db->get_transformed_set()), ElementsAre("1:x", "2:y"));
  EXPECT_THAT(registers(*load_data("set_without_type.xml").db->get_transformed_set()), ElementsAre("1:x", "2:y"));
}

TEST(Load, AddsEveryFurtherSetOfASide) {
  EXPECT_THAT(reference_registers_of("two_reference_sets.xml"), ElementsAre("1:a", "2:b"));
}

// The transformations clear the flag by which the children of the root are read.
// With a flag of their own, the load would read what follows, and accept files
// that flows expect to be refused.
TEST(Load, FailsWhenSomethingFollowsTheTransformations) {
  const LOADED loaded = load_data("child_behind_transformations.xml");
  EXPECT_FALSE(loaded.result);
  EXPECT_THAT(maps(*loaded.db), ElementsAre("a~ -> x~"));
  EXPECT_THAT(registers(*loaded.db->get_reference_set()), ElementsAre("1:a", "2:b"));
}

TEST(Load, FailsOnASecondSetOfTransformations) {
  const LOADED loaded = load_data("two_transformations_sets.xml");
  EXPECT_FALSE(loaded.result);
  EXPECT_THAT(maps(*loaded.db), ElementsAre("a~ -> x~"));
}

TEST(Load, TakesAnEmptySetOfTransformationsAtTheEnd) {
  EXPECT_TRUE(load_data("empty_transformations_last.xml").result);
}

TEST(Load, FailsWhenSomethingFollowsAnEmptySetOfTransformations) {
  const LOADED loaded = load_data("empty_transformations_then_more.xml");
  EXPECT_FALSE(loaded.result);
  EXPECT_THAT(maps(*loaded.db), IsEmpty());
}

TEST(Load, TakesARootWithoutChildren) {
  const LOADED loaded = load_data("no_children.xml");
  EXPECT_TRUE(loaded.result);
  EXPECT_EQ(saved(*loaded.db), saved(*new_database("loaded")));
}

TEST(Load, DoesNotAskForTheNameOfTheRoot) {
  const LOADED loaded = load_data("another_root.xml");
  EXPECT_TRUE(loaded.result);
  EXPECT_THAT(maps(*loaded.db), ElementsAre("a~ -> x~"));
}

TEST(Load, ReportsAnUnexpectedChildOfTheRootAndReadsItAsTheTransformations) {
  const HOST_LINES lines;
  const LOADED loaded = load_data("unexpected_child.xml");
  EXPECT_TRUE(loaded.result);
  EXPECT_THAT(maps(*loaded.db), ElementsAre("a~ -> x~"));
  ASSERT_EQ(lines.internal_errors().size(), 1U);
  const INTERNAL_ERROR& error = lines.internal_errors().front();
  EXPECT_EQ(error.condition, "strcmp(db_xml_subtree.get_node_name(), KPT_XML_STR_TRANSFORMATIONS_SET) == 0");
  EXPECT_EQ(error.tag, "KPT");
  EXPECT_EQ(error.file, "db/kpt/kpt_keypoints_db_impl");
  EXPECT_EQ(error.line, 1199);
}

TEST(Load, StopsBehindAnUnexpectedChildAsBehindTheTransformations) {
  const HOST_LINES lines;
  const LOADED loaded = load_data("unexpected_child_first.xml");
  EXPECT_FALSE(loaded.result);
  EXPECT_TRUE(loaded.db->get_reference_set()->is_empty());
  EXPECT_EQ(lines.internal_errors().size(), 1U);
}

TEST(Load, DoesNotAskForTheNamesOfKeypointsAndTransformations) {
  EXPECT_THAT(reference_registers_of("keypoints_by_another_name.xml"), ElementsAre("1:a", "2:b"));
  EXPECT_THAT(maps_of("transformations_by_another_name.xml"), ElementsAre("a~ -> x~"));
  EXPECT_THAT(maps_of("keypoints_of_a_group_by_another_name.xml"), ElementsAre("a b~ -> x~"));
}

TEST(Load, AddsARegisterWithoutANameUnderTheEmptyOne) {
  EXPECT_THAT(reference_registers_of("keypoint_without_name.xml"), ElementsAre("1:"));
}

TEST(Load, TakesTheFirstOfTwoNames) { EXPECT_THAT(reference_registers_of("two_names.xml"), ElementsAre("1:first")); }

TEST(Load, JoinsThePiecesOfAText) {
  EXPECT_THAT(reference_registers_of("texts_in_pieces.xml"), ElementsAre("1:q[<&]89"));
}

TEST(Load, PassesOverCommentsTextsAndInstructions) {
  const LOADED loaded = load_data("comments_everywhere.xml");
  EXPECT_TRUE(loaded.result);
  EXPECT_THAT(registers(*loaded.db->get_reference_set()), ElementsAre("1:a", "2:b"));
  EXPECT_THAT(maps(*loaded.db), ElementsAre("a~ -> x~"));
}

// A child node of any kind counts by its name, also where an element was meant.
TEST(Load, TakesAnInstructionForTheChildOfItsName) {
  EXPECT_THAT(reference_registers_of("instruction_named_entity.xml"), ElementsAre("1:q/u1/dff"));
}

TEST(Load, KeepsTheLaterOfTwoRegistersOfOneName) {
  EXPECT_THAT(reference_registers_of("same_name_twice.xml"), ElementsAre("2:a"));
  EXPECT_THAT(maps_of("same_name_twice.xml"), ElementsAre("null a~ -> "));
}

TEST(Load, FindsRegistersWhoseIdsAreFarApart) {
  const DATABASE db = new_database("d");
  for (const long id : {1L, 1000000L, 2000000000L}) {
    db->get_transformation_set()->add_map(db->add_to_register_set(KPT_REFERENCE_SET, id, "r" + std::to_string(id)),
                                          db->add_to_register_set(KPT_TRANSFORMED_SET, id, "t" + std::to_string(id)));
  }
  const FOLDER folder;
  const std::string path = folder.file_of(saved(*db));
  EXPECT_EQ(load_outcome(path, LOAD_WAY::SCANNER_FIRST), load_outcome(path, LOAD_WAY::DOCUMENT));
  const LOADED loaded = load(path);
  EXPECT_THAT(maps(*loaded.db), ElementsAre("r1~ -> t1~", "r1000000~ -> t1000000~", "r2000000000~ -> t2000000000~"));
}

// The key does not contain the entity.
TEST(Load, ReplacesAnInstanceByALaterOneOfAnotherEntity) {
  EXPECT_THAT(reference_registers_of("same_instance_twice.xml"), ElementsAre("2:a/u2/dff"));
}

// Whichever comes first in the file.
TEST(Load, TakesAnIdOfBothKindsForTheBlockInstance) {
  EXPECT_THAT(maps_of("same_id_of_both_kinds.xml"), ElementsAre("a~ -> "));
}

// To the highest signal id, not past it, so the first register after a load
// repeats that id. One past it would change ids that flows have recorded.
TEST(Load, RaisesTheCountersToTheHighestSignalId) {
  const COUNTERS counters(0, 0);
  const LOADED loaded = load_data("signal_ids_1_to_5.xml");
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, 5);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_t_id, 41);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::get_next_t_id(), 41);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::get_next_t_id(), 42);
}

TEST(Load, LeavesTheCountersToABlockInstance) {
  const COUNTERS counters(0, 0);
  EXPECT_THAT(reference_registers_of("signal_ids_1_to_5.xml"), Contains("40:i/u/dff"));
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, 5);
}

TEST(Load, NeverLowersACounter) {
  const COUNTERS counters(100, 100);
  const LOADED loaded = load_data("signal_ids_1_to_5.xml");
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, 100);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_t_id, 100);
}

TEST(Load, MakesAnEmptyIndexOfAStateWithoutGroups) {
  EXPECT_THAT(maps_of("state_without_groups.xml"), ElementsAre("a~|~ -> ~"));
}

TEST(Load, PlacesStatesByTheirOrderAndNotByTheirIndex) {
  EXPECT_THAT(maps_of("states_out_of_order.xml"), ElementsAre("b~|a~ -> x~"));
}

TEST(Load, TakesTheGroupsOfAStateInEitherOrder) {
  EXPECT_THAT(maps_of("groups_out_of_order.xml"), ElementsAre("a~b -> x~"));
}

TEST(Load, TakesTheFirstOfTwoGroupsOfAKind) {
  EXPECT_THAT(maps_of("two_groups_of_a_kind.xml"), ElementsAre("a~ -> x~"));
}

TEST(Load, TakesSidesAndTableInAnyOrder) { EXPECT_THAT(maps_of("table_first.xml"), ElementsAre("a~ -> x~ [1/0]")); }

// Leading blanks, 16 bits, and only 1 is true; text at any depth is text.
TEST(Load, ReadsAValueAsTrueWhenItsNumberIs1) {
  EXPECT_THAT(maps_of("table_values.xml"), ElementsAre("a~ -> x~ [/110000111]"));
}

TEST(Load, DoesNotReadTheStatesOfATableOfNone) {
  const HOST_LINES lines;
  EXPECT_THAT(maps_of("table_of_no_states.xml"), ElementsAre("a~ -> x~ []"));
  EXPECT_THAT(lines.debug(), Not(Contains(HasSubstr("statetable"))));
}

TEST(Load, ReadsATableWithoutCountsAsEmpty) {
  EXPECT_THAT(maps_of("table_without_counts.xml"), ElementsAre("a~ -> x~ []"));
}

TEST(Load, CountsTheStatesOfATableModulo65536) {
  EXPECT_THAT(maps_of("table_counts_beyond_16_bits.xml"), ElementsAre("a~ -> x~ [0/0 1/1]"));
}

TEST(Load, PlacesStatesOfATableByTheirIndex) {
  EXPECT_THAT(maps_of("fewer_states_than_counted.xml"), ElementsAre("a~ -> x~ [0/0 0/0 1/1]"));
}

TEST(Load, ReadsNoMoreStatesThanTheTableCounts) {
  EXPECT_THAT(maps_of("more_states_than_counted.xml"), ElementsAre("a~ -> x~ [0/0 1/1]"));
}

TEST(Load, ReadsTheOtherStatesWhenOneLacksASide) {
  const HOST_LINES lines;
  EXPECT_THAT(maps_of("states_without_a_side.xml"), ElementsAre("a~ -> x~ [0/1 1/0 1/1]"));
  EXPECT_THAT(lines.debug(), testing::Contains(NO_VALUES).Times(2));
}

TEST(Load, DoesNotAskForTheNamesOfStates) {
  EXPECT_THAT(maps_of("state_by_another_name.xml"), ElementsAre("a~ -> x~ [1/1]"));
}

TEST(Load, DropsAStateOutsideTheTable) {
  EXPECT_THAT(maps_of("state_outside_table.xml"), ElementsAre("a~ -> x~ [0/0]"));
}

TEST(Load, SkipsTheRestOfASideBehindAnEntryOutsideTheTable) {
  EXPECT_THAT(maps_of("entry_outside_table.xml"), ElementsAre("a~ -> x~ [100/1]"));
}

TEST(Load, FindsValuesAtAnyDepthAndTellsOfASideWithoutAny) {
  const HOST_LINES lines;
  EXPECT_THAT(maps_of("values_further_down.xml"), ElementsAre("a~ -> x~ [01/0]"));
  EXPECT_THAT(lines.debug(), testing::Contains(NO_VALUES).Times(1));
}

TEST(Load, TakesTheFirstOfTwoTables) { EXPECT_THAT(maps_of("two_tables.xml"), ElementsAre("a~ -> x~ [1/0]")); }

// Every element with a type is a side. The states of this side have no groups.
TEST(Load, ReadsATableWithATypeAlsoAsASide) {
  EXPECT_THAT(maps_of("table_with_a_type.xml"), ElementsAre("a~|~ -> x~ [1/1]"));
}

TEST(Load, TellsWhetherAKeypointHadAName) {
  const FOLDER folder;
  const KPT_XML_READER reader;
  const KPT_XML_PARSER parser(folder.file_of("<s><k type='register'/><k type='register'><name>a</name></k></s>"));
  bool ok = true;
  KPT_XML_ELEMENT root = parser.root_element("kpt_db", &ok);
  const DATABASE db = new_database("d");
  const COUNTERS counters(0, 0);
  KPT_XML_ELEMENT keypoint = root.get_first_child(&ok);
  EXPECT_FALSE(db->parse_one_keypoint(KPT_REFERENCE_SET, keypoint));
  keypoint = root.get_next_sibling(&ok);
  EXPECT_TRUE(db->parse_one_keypoint(KPT_REFERENCE_SET, keypoint));
}

TEST(Load, AnswersForASetThatItCameToItsEnd) {
  const FOLDER folder;
  const KPT_XML_READER reader;
  const KPT_XML_PARSER parser(folder.file_of("<key_points_set/>"));
  bool ok = true;
  KPT_XML_ELEMENT root = parser.root_element("kpt_db", &ok);
  EXPECT_TRUE(new_database("d")->parse_one_keypoint_set(root));
}

}  // namespace
