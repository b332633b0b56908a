#include "db/kpt/kpt_keypoint_set.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_xml_writer.h"
#include "tests/support/keypoint_sets.h"

namespace {

using namespace std::string_view_literals;
using kpt_test::ids_in;
using kpt_test::names_in;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char LONG_NAME[] = "a_rather_long_name_of_a_register_that_needs_a_block";

// --- adding and finding ---

TEST(KeypointSet, IsEmptyAtFirst) {
  const KPT_KEYPOINT_SET_IMPL set;
  EXPECT_TRUE(set.is_empty());
  EXPECT_THAT(set.get_list_of_keypoints(), IsEmpty());
  EXPECT_THAT(set.get_id_keypoint_hash(), IsEmpty());
  EXPECT_EQ(set.get_register("a"), nullptr);
  EXPECT_EQ(set.get_register("a", "u1", "dff"), nullptr);
}

TEST(KeypointSet, SignalIsFoundByItsName) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const keypoint = set.add_register(7, "a");
  ASSERT_NE(keypoint, nullptr);
  EXPECT_TRUE(keypoint->register_is_signal());
  EXPECT_EQ(keypoint->get_kpid(), 7);
  EXPECT_EQ(set.get_register("a"), keypoint);
  EXPECT_EQ(set.get_register("A"), nullptr);
  EXPECT_FALSE(set.is_empty());
}

TEST(KeypointSet, BlockInstanceIsFoundByNameAndType) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const keypoint = set.add_register(7, "a", "u1", "dff");
  ASSERT_NE(keypoint, nullptr);
  EXPECT_TRUE(keypoint->register_is_blockinstance());
  EXPECT_EQ(set.get_register("a", "u1", "dff"), keypoint);
  EXPECT_EQ(set.get_register("a", "u1", "dlatch"), nullptr);
  EXPECT_EQ(set.get_register("b", "u1", "dff"), nullptr);
  EXPECT_FALSE(set.is_empty());
}

TEST(KeypointSet, EntityIsNoPartOfALookup) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const keypoint = set.add_register(7, "a", "B", "dff");
  EXPECT_EQ(set.get_register("a", "A", "dff"), keypoint);
  EXPECT_EQ(set.get_register("a", "", "dff"), keypoint);
}

TEST(KeypointSet, SignalAndBlockInstanceOfOneNameAreTwo) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const signal = set.add_register(1, "a");
  KPT_REGISTER_KEYPOINT_IMPL* const instance = set.add_register(2, "a", "u1", "dff");
  EXPECT_NE(signal, instance);
  EXPECT_EQ(set.get_register("a"), signal);
  EXPECT_EQ(set.get_register("a", "u1", "dff"), instance);
  EXPECT_EQ(set.get_register("a", "u1", ""), nullptr);
}

// Its key has the same hash as that of the signal.
TEST(KeypointSet, BlockInstanceWithoutATypeIsNoSignal) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const instance = set.add_register(2, "a", "u1", "");
  EXPECT_EQ(set.get_register("a"), nullptr);
  EXPECT_EQ(set.get_register("a", "", ""), instance);
}

TEST(KeypointSet, PairsThatReadAlikeOneBehindTheOtherAreTwo) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const a = set.add_register(1, "ab", "u1", "c");
  KPT_REGISTER_KEYPOINT_IMPL* const b = set.add_register(2, "a", "u1", "bc");
  EXPECT_EQ(set.get_register("ab", "u1", "c"), a);
  EXPECT_EQ(set.get_register("a", "u1", "bc"), b);
  EXPECT_EQ(set.get_register("abc", "u1", ""), nullptr);
}

TEST(KeypointSet, AnyBytesAreAName) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const empty = set.add_register(1, "");
  KPT_REGISTER_KEYPOINT_IMPL* const zero = set.add_register(2, "\0"sv);
  KPT_REGISTER_KEYPOINT_IMPL* const high = set.add_register(3, "\x80\xFF"sv);
  EXPECT_EQ(set.get_register(""), empty);
  EXPECT_EQ(set.get_register("\0"sv), zero);
  EXPECT_EQ(set.get_register("\x80\xFF"sv), high);
}

TEST(KeypointSet, KeepsCopiesOfTheTexts) {
  KPT_KEYPOINT_SET_IMPL set;
  std::string name = LONG_NAME;
  set.add_register(1, name);
  name.assign(name.size(), 'x');
  EXPECT_NE(set.get_register(LONG_NAME), nullptr);
}

TEST(KeypointSet, IdsNeedNotBeUnique) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a");
  set.add_register(1, "b");
  EXPECT_THAT(ids_in(set), ElementsAre(1, 1));
}

TEST(KeypointSet, FindsEachOfManyRegisters) {
  KPT_KEYPOINT_SET_IMPL set;
  for (int k = 0; k < 20000; ++k) {
    set.add_register(k, "top/u" + std::to_string(k) + "/state_reg");
    set.add_register(20000 + k, "top/u" + std::to_string(k), "u", "dff");
  }
  for (int k = 0; k < 20000; ++k) {
    ASSERT_EQ(set.get_register("top/u" + std::to_string(k) + "/state_reg")->get_kpid(), k);
    ASSERT_EQ(set.get_register("top/u" + std::to_string(k), "", "dff")->get_kpid(), 20000 + k);
  }
  EXPECT_EQ(set.size(), 40000U);
}

// --- taking over a name ---

TEST(KeypointSet, LaterSignalTakesOverTheName) {
  KPT_KEYPOINT_SET_IMPL set;
  const KPT_REGISTER_KEYPOINT_IMPL* const earlier = set.add_register(1, "a");
  KPT_REGISTER_KEYPOINT_IMPL* const later = set.add_register(2, "a");
  EXPECT_NE(earlier, later);
  EXPECT_EQ(set.get_register("a"), later);
  EXPECT_THAT(ids_in(set), ElementsAre(2));
}

// The index finds an instance by name and type only. With the entity in the key,
// registers that earlier stages took for one would be two.
TEST(KeypointSet, InstanceThatDiffersInItsEntityAloneTakesOver) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a", "u1", "dff");
  KPT_REGISTER_KEYPOINT_IMPL* const later = set.add_register(2, "a", "u2", "dff");
  EXPECT_EQ(set.get_register("a", "u1", "dff"), later);
  EXPECT_THAT(ids_in(set), ElementsAre(2));
}

TEST(KeypointSet, RegisterThatLostItsNameStaysReadable) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const earlier = set.add_register(1, LONG_NAME, "u1", "dff");
  earlier->add_attribute("note", "x");
  set.add_register(2, LONG_NAME, "u2", "dff");
  EXPECT_EQ(earlier->get_element_name(), LONG_NAME);
  EXPECT_EQ(earlier->get_entity_name(), "u1");
  EXPECT_EQ(earlier->get_register_type(), "dff");
  EXPECT_EQ(earlier->get_kpid(), 1);
  EXPECT_TRUE(earlier->register_is_blockinstance());
  EXPECT_EQ(earlier->get_attribute("note"), "");
}

// --- deleting ---

TEST(KeypointSet, DeletedRegisterIsGone) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a");
  set.add_register(2, "a", "u1", "dff");
  EXPECT_TRUE(set.delete_register("a"));
  EXPECT_EQ(set.get_register("a"), nullptr);
  EXPECT_THAT(ids_in(set), ElementsAre(2));
  EXPECT_TRUE(set.delete_register("a", "u1", "dff"));
  EXPECT_TRUE(set.is_empty());
  EXPECT_THAT(set.get_id_keypoint_hash(), IsEmpty());
}

TEST(KeypointSet, DeletingIgnoresTheEntity) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a", "u1", "dff");
  EXPECT_TRUE(set.delete_register("a", "elsewhere", "dff"));
  EXPECT_TRUE(set.is_empty());
}

TEST(KeypointSet, DeletingWhatIsNotThereIsFalse) {
  KPT_KEYPOINT_SET_IMPL set;
  EXPECT_FALSE(set.delete_register("a"));
  EXPECT_FALSE(set.delete_register("a", "u1", "dff"));
  set.add_register(1, "a");
  EXPECT_FALSE(set.delete_register("b"));
  EXPECT_FALSE(set.delete_register("a", "", ""));
  EXPECT_TRUE(set.delete_register("a"));
  EXPECT_FALSE(set.delete_register("a"));
}

TEST(KeypointSet, SignalDeletedByItsOwnNameIsGone) {
  KPT_KEYPOINT_SET_IMPL set;
  const KPT_REGISTER_KEYPOINT_IMPL* const keypoint = set.add_register(1, LONG_NAME);
  EXPECT_TRUE(set.delete_register(keypoint->get_element_name()));
  EXPECT_TRUE(set.is_empty());
}

// Maps may list it.
TEST(KeypointSet, DeletedRegisterStaysReadable) {
  KPT_KEYPOINT_SET_IMPL set;
  const KPT_REGISTER_KEYPOINT_IMPL* const signal = set.add_register(1, LONG_NAME);
  const KPT_REGISTER_KEYPOINT_IMPL* const instance = set.add_register(2, LONG_NAME, "u1", "dff");
  set.delete_register(LONG_NAME);
  set.delete_register(LONG_NAME, "u1", "dff");
  EXPECT_EQ(signal->get_element_name(), LONG_NAME);
  EXPECT_EQ(signal->get_kpid(), 1);
  EXPECT_TRUE(signal->register_is_signal());
  EXPECT_EQ(instance->get_element_name(), LONG_NAME);
  EXPECT_EQ(instance->get_entity_name(), "u1");
  EXPECT_EQ(instance->get_register_type(), "dff");
  EXPECT_EQ(instance->get_kpid(), 2);
}

TEST(KeypointSet, DeletedRegisterLosesItsAttributes) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const keypoint = set.add_register(1, "a");
  keypoint->add_attribute("note", "x");
  set.delete_register("a");
  EXPECT_EQ(keypoint->get_attribute("note"), "");
  EXPECT_FALSE(keypoint->remove_attribute("note"));
}

// A map or an index that has the old address would otherwise name another
// register.
TEST(KeypointSet, AddressIsNeverGivenToAnotherRegister) {
  KPT_KEYPOINT_SET_IMPL set;
  std::set<const KPT_KEYPOINT*> addresses;
  for (int k = 0; k < 2000; ++k) {
    ASSERT_TRUE(addresses.insert(set.add_register(k, "a")).second);
    if (k % 2 == 0) {
      ASSERT_TRUE(set.delete_register("a"));
    }
  }
}

TEST(KeypointSet, NameCanBeAddedAgainAfterItWasDeleted) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a");
  set.add_register(2, "b");
  set.delete_register("a");
  KPT_REGISTER_KEYPOINT_IMPL* const again = set.add_register(3, "a");
  EXPECT_EQ(set.get_register("a"), again);
  EXPECT_THAT(ids_in(set), ElementsAre(2, 3));
}

// --- lists ---

TEST(KeypointSet, ListsSignalsThenInstancesInOrderOfCreation) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "z", "u", "dff");
  set.add_register(2, "m");
  set.add_register(3, "a", "u", "dff");
  set.add_register(4, "a");
  set.add_register(5, "z");
  EXPECT_THAT(ids_in(set), ElementsAre(2, 4, 5, 1, 3));
}

TEST(KeypointSet, RegisterThatTakesOverANameStandsAtTheEnd) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a");
  set.add_register(2, "b");
  set.add_register(3, "a");
  EXPECT_THAT(ids_in(set), ElementsAre(2, 3));
}

TEST(KeypointSet, OrderDoesNotDependOnHowTheIndexGrew) {
  KPT_KEYPOINT_SET_IMPL set;
  for (int k = 0; k < 5000; ++k) {
    set.add_register(k, "r" + std::to_string(k * 7919 % 5000));
  }
  const std::vector<long> ids = ids_in(set);
  for (int k = 0; k < 5000; ++k) {
    ASSERT_EQ(ids[static_cast<std::size_t>(k)], k);
  }
}

TEST(KeypointSet, IdIndexLeadsFromIdToKeypoint) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT* const a = set.add_register(10, "a");
  KPT_KEYPOINT* const b = set.add_register(-3, "b", "u", "dff");
  KPT_ID_KEYPOINT_HASH by_id = set.get_id_keypoint_hash();
  EXPECT_EQ(by_id.size(), 2U);
  EXPECT_EQ(by_id.at(10), a);
  EXPECT_EQ(by_id.at(-3), b);
}

TEST(KeypointSet, OfTwoWithOneIdTheLaterWinsAndAnInstanceOverASignal) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_KEYPOINT* const instance = set.add_register(1, "i", "u", "dff");
  set.add_register(1, "a");
  KPT_KEYPOINT* const later = set.add_register(2, "c", "u", "dff");
  set.add_register(2, "b");
  set.add_register(3, "d");
  KPT_KEYPOINT* const last = set.add_register(3, "e");
  KPT_ID_KEYPOINT_HASH by_id = set.get_id_keypoint_hash();
  EXPECT_EQ(by_id.size(), 3U);
  EXPECT_EQ(by_id.at(1), instance);
  EXPECT_EQ(by_id.at(2), later);
  EXPECT_EQ(by_id.at(3), last);
}

// --- renamed registers ---

TEST(KeypointSet, RenamedRegisterIsFoundUnderTheNameItWasAddedWith) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const keypoint = set.add_register(1, "a");
  keypoint->set_element_name(LONG_NAME);
  keypoint->set_element_name("b");
  EXPECT_EQ(set.get_register("a"), keypoint);
  EXPECT_EQ(set.get_register("b"), nullptr);
  EXPECT_EQ(set.get_register(LONG_NAME), nullptr);
  EXPECT_THAT(names_in(set), ElementsAre("b"));
}

TEST(KeypointSet, RegisterOfAnotherKindIsFoundAsTheKindItWasAddedAs) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const signal = set.add_register(1, "a");
  KPT_REGISTER_KEYPOINT_IMPL* const instance = set.add_register(2, "q", "u1", "dff");
  EXPECT_TRUE(signal->substitute_with_instance("b", "u2", "dlatch"));
  EXPECT_TRUE(instance->substitute_with_signal("p"));
  EXPECT_EQ(set.get_register("a"), signal);
  EXPECT_EQ(set.get_register("b", "u2", "dlatch"), nullptr);
  EXPECT_EQ(set.get_register("q", "", "dff"), instance);
  EXPECT_EQ(set.get_register("p"), nullptr);
  EXPECT_THAT(ids_in(set), ElementsAre(1, 2));
}

TEST(KeypointSet, NewNameOfARenamedRegisterIsFree) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a")->set_element_name("b");
  set.add_register(2, "b");
  EXPECT_THAT(ids_in(set), ElementsAre(1, 2));
  EXPECT_EQ(set.get_register("b")->get_kpid(), 2);
}

TEST(KeypointSet, OldNameOfARenamedRegisterIsTaken) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a")->set_element_name("b");
  set.add_register(2, "a");
  EXPECT_THAT(ids_in(set), ElementsAre(2));
}

TEST(KeypointSet, RenamedRegisterIsDeletedUnderTheNameItWasAddedWith) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const keypoint = set.add_register(1, "a");
  keypoint->set_element_name(LONG_NAME);
  EXPECT_FALSE(set.delete_register(LONG_NAME));
  EXPECT_TRUE(set.delete_register("a"));
  EXPECT_EQ(keypoint->get_element_name(), LONG_NAME);
}

TEST(KeypointSet, RenamedRegistersAreFoundAfterTheIndexHasGrown) {
  KPT_KEYPOINT_SET_IMPL set;
  KPT_REGISTER_KEYPOINT_IMPL* const keypoint = set.add_register(1, "a");
  keypoint->set_element_name("b");
  for (int k = 0; k < 1000; ++k) {
    set.add_register(k, "r" + std::to_string(k));
  }
  EXPECT_EQ(set.get_register("a"), keypoint);
}

// Whatever is not the reference side is the transformed one.
TEST(KeypointSet, IsSavedInItsOrderUnderTheWordOfItsSide) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "q_a", "u1", "dff");
  set.add_register(2, "clk_en");
  const std::string path = testing::TempDir() + "kpt_unit_keypoint_set_" + std::to_string(getpid()) + ".xml";
  {
    KPT_XML_WRITER writer(path);
    ASSERT_TRUE(writer.start_file());
    EXPECT_TRUE(set.save_keypoint_set(KPT_REFERENCE_SET, writer));
    EXPECT_TRUE(KPT_KEYPOINT_SET_IMPL().save_keypoint_set(static_cast<KPT_SET_ENUM>(7), writer));
  }
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  std::remove(path.c_str());
  const std::string file = text.str();
  EXPECT_EQ(file.find("<key_points_set type=\"reference\">\n"), 0U);
  EXPECT_LT(file.find("clk_en"), file.find("q_a"));
  EXPECT_NE(file.find("<key_points_set type=\"transformed\">\n"), std::string::npos);
}

// --- the handle ---

TEST(KeypointSetHandle, IsNullUnlessItIsGivenASet) {
  KPT_KEYPOINT_SET_IMPL set;
  EXPECT_TRUE(KPT_KEYPOINT_SET().is_null());
  EXPECT_FALSE(KPT_KEYPOINT_SET(&set).is_null());
}

TEST(KeypointSetHandle, ListsTheRegistersInTheOrderOfTheSet) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "z", "u", "dff");
  set.add_register(2, "b");
  set.add_register(3, "a");
  std::vector<std::string> names;
  for (const KPT_REGISTER_KEYPOINT& handle : KPT_KEYPOINT_SET(&set).get_list_of_registers()) {
    names.emplace_back(handle.get_name());
  }
  EXPECT_THAT(names, ElementsAre("b", "a", "z"));
}

TEST(KeypointSetHandle, ListOfAnEmptySetIsEmpty) {
  KPT_KEYPOINT_SET_IMPL set;
  EXPECT_THAT(KPT_KEYPOINT_SET(&set).get_list_of_registers(), IsEmpty());
}

TEST(KeypointSetHandle, FindsRegistersOrAnswersANullHandle) {
  KPT_KEYPOINT_SET_IMPL set;
  set.add_register(1, "a");
  set.add_register(2, "q", "u1", "dff");
  const KPT_KEYPOINT_SET handle(&set);
  EXPECT_EQ(handle.get_register("a").get_name(), "a");
  EXPECT_EQ(handle.get_register("q", "any", "dff").get_entity_name(), "u1");
  EXPECT_TRUE(handle.get_register("q").is_null());
  EXPECT_TRUE(handle.get_register("a", "u1", "dff").is_null());
}

}  // namespace
