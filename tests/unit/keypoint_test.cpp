#include "db/kpt/kpt_keypoint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_xml_writer.h"
#include "tests/support/live_blocks.h"

namespace {

using namespace std::string_view_literals;

// Too long to be stored in a string object, so a dangling view shows.
constexpr char LONG_A[] = "a_rather_long_name_of_a_register_that_needs_a_block";
constexpr char LONG_B[] = "another_long_name_of_an_entity_that_needs_a_block_too";
constexpr char LONG_C[] = "a_register_type_long_enough_to_need_a_block_of_its_own";

// The text that `save` writes into a new file.
template <class SAVE>
std::string saved(SAVE save) {
  const std::string path = testing::TempDir() + "kpt_unit_keypoint_" + std::to_string(getpid()) + ".xml";
  {
    KPT_XML_WRITER writer(path);
    EXPECT_TRUE(writer.start_file());
    EXPECT_TRUE(save(writer));
  }
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  std::remove(path.c_str());
  return text.str();
}

// --- the base ---

TEST(Keypoint, HasTheNameAndIdItWasMadeWith) {
  const KPT_KEYPOINT keypoint(KPT_REGISTER_TYPE, 17, "clk_en");
  EXPECT_EQ(keypoint.get_element_name(), "clk_en");
  EXPECT_EQ(keypoint.get_kpid(), 17);
}

TEST(Keypoint, IdIsSignedAndSixtyFourBitsWide) {
  EXPECT_EQ(KPT_KEYPOINT(KPT_REGISTER_TYPE, -1, "").get_kpid(), -1);
  EXPECT_EQ(KPT_KEYPOINT(KPT_REGISTER_TYPE, 1L << 40, "").get_kpid(), 1L << 40);
}

TEST(Keypoint, TypeIsNotStored) {
  EXPECT_FALSE(KPT_KEYPOINT(KPT_REGISTER_TYPE, 1, "a").is_register());
  EXPECT_FALSE(KPT_KEYPOINT(static_cast<KPT_TYPE_ENUM>(9), 1, "a") != KPT_KEYPOINT(KPT_REGISTER_TYPE, 1, "a"));
}

TEST(Keypoint, TakesAnyBytesAsName) {
  const KPT_KEYPOINT keypoint(KPT_REGISTER_TYPE, 1, "\xC3\xA9\0x"sv);
  EXPECT_EQ(keypoint.get_element_name(), "\xC3\xA9\0x"sv);
}

TEST(Keypoint, NameCanBeReplaced) {
  KPT_KEYPOINT keypoint(KPT_REGISTER_TYPE, 1, "a");
  keypoint.set_element_name(LONG_A);
  EXPECT_EQ(keypoint.get_element_name(), LONG_A);
  keypoint.set_element_name("");
  EXPECT_EQ(keypoint.get_element_name(), "");
}

TEST(Keypoint, CanBeRenamedToAPartOfItsOwnName) {
  KPT_KEYPOINT keypoint(KPT_REGISTER_TYPE, 1, LONG_A);
  keypoint.set_element_name(std::string_view(keypoint.get_element_name()).substr(2));
  EXPECT_EQ(keypoint.get_element_name(), LONG_A + 2);
}

TEST(Keypoint, DifferentIdsAreUnequal) {
  EXPECT_TRUE(KPT_KEYPOINT(KPT_REGISTER_TYPE, 1, "a") != KPT_KEYPOINT(KPT_REGISTER_TYPE, 2, "a"));
}

TEST(Keypoint, DifferentNamesAreUnequal) {
  const KPT_KEYPOINT keypoint(KPT_REGISTER_TYPE, 1, "a");
  EXPECT_TRUE(keypoint != KPT_KEYPOINT(KPT_REGISTER_TYPE, 1, "A"));
  EXPECT_TRUE(keypoint != KPT_KEYPOINT(KPT_REGISTER_TYPE, 1, "a\0"sv));
}

TEST(Keypoint, SameIdAndNameAreEqual) {
  EXPECT_FALSE(KPT_KEYPOINT(KPT_REGISTER_TYPE, 1, "a") != KPT_KEYPOINT(KPT_REGISTER_TYPE, 1, "a"));
}

TEST(Keypoint, CopyHasNameAndId) {
  const KPT_KEYPOINT keypoint(KPT_REGISTER_TYPE, 3, LONG_A);
  const KPT_KEYPOINT copy(keypoint);  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_EQ(copy.get_element_name(), LONG_A);
  EXPECT_EQ(copy.get_kpid(), 3);
}

TEST(Keypoint, NewGivesZeroFilledMemoryAndDeleteTakesItBack) {
  void* const block = KPT_REGISTER_KEYPOINT_IMPL::operator new(sizeof(KPT_REGISTER_KEYPOINT_IMPL));
  const unsigned char zeros[sizeof(KPT_REGISTER_KEYPOINT_IMPL)] = {};
  EXPECT_EQ(std::memcmp(block, zeros, sizeof zeros), 0);
  KPT_REGISTER_KEYPOINT_IMPL::operator delete(block);
}

TEST(Keypoint, CanBeDeletedThroughItsBase) {
  const std::unique_ptr<KPT_KEYPOINT> keypoint(new KPT_REGISTER_KEYPOINT_IMPL(1, LONG_A, LONG_B, LONG_C));
  EXPECT_TRUE(keypoint->is_register());
}

TEST(Keypoint, IsSavedAsAGenericKeypoint) {
  const KPT_KEYPOINT keypoint(KPT_REGISTER_TYPE, 12, "a");
  EXPECT_EQ(saved([&](KPT_XML_WRITER& writer) { return keypoint.save_keypoint(writer); }),
            "    <key_point id=\"12\" type=\"keypoint\">\n"
            "    <name>a</name>\n"
            "  </key_point>\n");
}

// --- register keypoints ---

TEST(RegisterKeypoint, MadeOfANameIsASignal) {
  const KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "clk_en");
  EXPECT_EQ(keypoint.get_kpid(), 5);
  EXPECT_EQ(keypoint.get_element_name(), "clk_en");
  EXPECT_EQ(keypoint.get_entity_name(), "");
  EXPECT_EQ(keypoint.get_register_type(), "");
  EXPECT_TRUE(keypoint.register_is_signal());
  EXPECT_FALSE(keypoint.register_is_blockinstance());
  EXPECT_TRUE(keypoint.is_register());
}

TEST(RegisterKeypoint, MadeOfNameEntityAndTypeIsABlockInstance) {
  const KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "q_a", "u1", "dff");
  EXPECT_EQ(keypoint.get_element_name(), "q_a");
  EXPECT_EQ(keypoint.get_entity_name(), "u1");
  EXPECT_EQ(keypoint.get_register_type(), "dff");
  EXPECT_FALSE(keypoint.register_is_signal());
  EXPECT_TRUE(keypoint.register_is_blockinstance());
  EXPECT_TRUE(keypoint.is_register());
}

TEST(RegisterKeypoint, BlockInstanceWithEmptyTextsIsStillOne) {
  EXPECT_TRUE(KPT_REGISTER_KEYPOINT_IMPL(1, "", "", "").register_is_blockinstance());
}

TEST(RegisterKeypoint, OwnsCopiesOfItsTexts) {
  std::string name = LONG_A;
  std::string entity = LONG_B;
  std::string type = LONG_C;
  const KPT_REGISTER_KEYPOINT_IMPL keypoint(1, name, entity, type);
  name.assign(name.size(), 'x');
  entity.assign(entity.size(), 'x');
  type.assign(type.size(), 'x');
  EXPECT_EQ(keypoint.get_element_name(), LONG_A);
  EXPECT_EQ(keypoint.get_entity_name(), LONG_B);
  EXPECT_EQ(keypoint.get_register_type(), LONG_C);
}

TEST(RegisterKeypoint, CopyOfASignalIsASignal) {
  const KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "clk_en");
  const KPT_REGISTER_KEYPOINT_IMPL copy(keypoint);  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_EQ(copy.get_kpid(), 5);
  EXPECT_EQ(copy.get_element_name(), "clk_en");
  EXPECT_EQ(copy.get_entity_name(), "");
  EXPECT_TRUE(copy.register_is_signal());
}

TEST(RegisterKeypoint, CopyOfABlockInstanceIsOneWithItsTexts) {
  const KPT_REGISTER_KEYPOINT_IMPL keypoint(5, LONG_A, LONG_B, LONG_C);
  const KPT_REGISTER_KEYPOINT_IMPL copy(keypoint);  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_FALSE(copy != keypoint);
  EXPECT_EQ(copy.get_entity_name(), LONG_B);
  EXPECT_EQ(copy.get_register_type(), LONG_C);
  EXPECT_TRUE(copy.register_is_blockinstance());
}

// Clients annotate the register of one netlist. A copy with the notes would carry
// them into the next stage.
TEST(RegisterKeypoint, CopyHasNoAttributes) {
  KPT_REGISTER_KEYPOINT_IMPL instance(5, "q", "u1", "dff");
  instance.add_attribute("note", "x");
  EXPECT_EQ(KPT_REGISTER_KEYPOINT_IMPL(instance).get_attribute("note"), "");
  KPT_REGISTER_KEYPOINT_IMPL signal(5, "q");
  signal.add_attribute("note", "x");
  EXPECT_EQ(KPT_REGISTER_KEYPOINT_IMPL(signal).get_attribute("note"), "");
  EXPECT_EQ(signal.get_attribute("note"), "x");
}

// --- substitution ---

TEST(RegisterKeypoint, SignalSubstitutedWithASignalIsRenamed) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  EXPECT_TRUE(keypoint.substitute_with_signal("b"));
  EXPECT_EQ(keypoint.get_element_name(), "b");
  EXPECT_TRUE(keypoint.register_is_signal());
  EXPECT_EQ(keypoint.get_kpid(), 5);
}

TEST(RegisterKeypoint, BlockInstanceSubstitutedWithASignalLosesEntityAndType) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a", "u1", "dff");
  EXPECT_TRUE(keypoint.substitute_with_signal("b"));
  EXPECT_EQ(keypoint.get_element_name(), "b");
  EXPECT_EQ(keypoint.get_entity_name(), "");
  EXPECT_EQ(keypoint.get_register_type(), "");
  EXPECT_TRUE(keypoint.register_is_signal());
  EXPECT_FALSE(keypoint.register_is_blockinstance());
}

TEST(RegisterKeypoint, SignalSubstitutedWithAnInstanceBecomesOne) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  EXPECT_TRUE(keypoint.substitute_with_instance("b", "u2", "dlatch"));
  EXPECT_EQ(keypoint.get_element_name(), "b");
  EXPECT_EQ(keypoint.get_entity_name(), "u2");
  EXPECT_EQ(keypoint.get_register_type(), "dlatch");
  EXPECT_TRUE(keypoint.register_is_blockinstance());
}

TEST(RegisterKeypoint, BlockInstanceSubstitutedWithAnInstanceStaysOne) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a", "u1", "dff");
  EXPECT_TRUE(keypoint.substitute_with_instance("b", "u2", "dlatch"));
  EXPECT_EQ(keypoint.get_element_name(), "b");
  EXPECT_EQ(keypoint.get_entity_name(), "u2");
  EXPECT_EQ(keypoint.get_register_type(), "dlatch");
  EXPECT_TRUE(keypoint.register_is_blockinstance());
}

TEST(RegisterKeypoint, SubstitutionKeepsAttributes) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a", "u1", "dff");
  keypoint.add_attribute("note", "x");
  keypoint.substitute_with_signal("b");
  EXPECT_EQ(keypoint.get_attribute("note"), "x");
  keypoint.substitute_with_instance("c", "u2", "dff");
  EXPECT_EQ(keypoint.get_attribute("note"), "x");
}

TEST(RegisterKeypoint, CanBeSubstitutedWithASignalNamedAsItsEntity) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, LONG_A, LONG_B, LONG_C);
  EXPECT_TRUE(keypoint.substitute_with_signal(keypoint.get_entity_name()));
  EXPECT_EQ(keypoint.get_element_name(), LONG_B);
}

TEST(RegisterKeypoint, TextsOfASubstitutionMayBeItsOwn) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, LONG_A, LONG_B, LONG_C);
  EXPECT_TRUE(keypoint.substitute_with_instance(keypoint.get_register_type(), keypoint.get_element_name(),
                                                keypoint.get_entity_name()));
  EXPECT_EQ(keypoint.get_element_name(), LONG_C);
  EXPECT_EQ(keypoint.get_entity_name(), LONG_A);
  EXPECT_EQ(keypoint.get_register_type(), LONG_B);
}

// --- attributes ---

TEST(RegisterKeypoint, AttributeIsReadBack) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  EXPECT_TRUE(keypoint.add_attribute("clock", "clk"));
  EXPECT_TRUE(keypoint.add_attribute("reset", "rst"));
  EXPECT_EQ(keypoint.get_attribute("clock"), "clk");
  EXPECT_EQ(keypoint.get_attribute("reset"), "rst");
}

TEST(RegisterKeypoint, AttributeIsOverwritten) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  EXPECT_TRUE(keypoint.add_attribute("clock", "clk"));
  EXPECT_TRUE(keypoint.add_attribute("clock", "clk2"));
  EXPECT_EQ(keypoint.get_attribute("clock"), "clk2");
  EXPECT_TRUE(keypoint.remove_attribute("clock"));
  EXPECT_FALSE(keypoint.remove_attribute("clock"));
}

TEST(RegisterKeypoint, MissingAttributeReadsEmptyAndIsNotMade) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  EXPECT_EQ(keypoint.get_attribute("none"), "");
  EXPECT_FALSE(keypoint.remove_attribute("none"));
  keypoint.add_attribute("other", "x");
  EXPECT_EQ(keypoint.get_attribute("none"), "");
  EXPECT_FALSE(keypoint.remove_attribute("none"));
}

// The reader does not distinguish the two; removing does.
TEST(RegisterKeypoint, AttributeMayBeEmpty) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  EXPECT_TRUE(keypoint.add_attribute("", ""));
  EXPECT_EQ(keypoint.get_attribute(""), "");
  EXPECT_TRUE(keypoint.remove_attribute(""));
}

TEST(RegisterKeypoint, AttributeIsRemovedOnce) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  keypoint.add_attribute("clock", "clk");
  EXPECT_TRUE(keypoint.remove_attribute("clock"));
  EXPECT_FALSE(keypoint.remove_attribute("clock"));
  EXPECT_EQ(keypoint.get_attribute("clock"), "");
}

TEST(RegisterKeypoint, AttributeNamesAreCaseSensitive) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  keypoint.add_attribute("clock", "x");
  EXPECT_EQ(keypoint.get_attribute("Clock"), "");
}

TEST(RegisterKeypoint, AttributesCostNothingUntilOneIsAdded) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  const unsigned long before = kpt_test::live_blocks();
  keypoint.get_attribute("clock");
  keypoint.remove_attribute("clock");
  EXPECT_EQ(kpt_test::live_blocks(), before);
}

TEST(RegisterKeypoint, HoldsManyAttributes) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(5, "a");
  for (int k = 0; k < 1000; ++k) {
    keypoint.add_attribute("attribute_" + std::to_string(k), std::to_string(k));
  }
  for (int k = 0; k < 1000; ++k) {
    ASSERT_EQ(std::string_view(keypoint.get_attribute("attribute_" + std::to_string(k))), std::to_string(k));
  }
}

// --- inequality ---

TEST(RegisterKeypoint, DifferentIdsAreUnequal) {
  EXPECT_TRUE(KPT_REGISTER_KEYPOINT_IMPL(1, "a") != KPT_REGISTER_KEYPOINT_IMPL(2, "a"));
}

TEST(RegisterKeypoint, DifferentTextsAreUnequal) {
  const KPT_REGISTER_KEYPOINT_IMPL keypoint(1, "a", "u1", "dff");
  EXPECT_TRUE(keypoint != KPT_REGISTER_KEYPOINT_IMPL(1, "b", "u1", "dff"));
  EXPECT_TRUE(keypoint != KPT_REGISTER_KEYPOINT_IMPL(1, "a", "u2", "dff"));
  EXPECT_TRUE(keypoint != KPT_REGISTER_KEYPOINT_IMPL(1, "a", "u1", "dlatch"));
  EXPECT_FALSE(keypoint != KPT_REGISTER_KEYPOINT_IMPL(1, "a", "u1", "dff"));
}

TEST(RegisterKeypoint, KindTakesNoPart) {
  EXPECT_FALSE(KPT_REGISTER_KEYPOINT_IMPL(1, "a") != KPT_REGISTER_KEYPOINT_IMPL(1, "a", "", ""));
}

TEST(RegisterKeypoint, AttributesTakeNoPart) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(1, "a");
  keypoint.add_attribute("note", "x");
  EXPECT_FALSE(keypoint != KPT_REGISTER_KEYPOINT_IMPL(1, "a"));
}

// The base class compares only ids and names, and can still be called.
TEST(RegisterKeypoint, ComparedAsKeypointsOnlyIdAndNameCount) {
  const KPT_REGISTER_KEYPOINT_IMPL a(1, "a", "u1", "dff");
  const KPT_REGISTER_KEYPOINT_IMPL b(1, "a", "u2", "dff");
  const KPT_KEYPOINT& base_of_a = a;
  const KPT_KEYPOINT& base_of_b = b;
  EXPECT_TRUE(a != b);
  EXPECT_FALSE(a != base_of_b);
  EXPECT_FALSE(base_of_a != b);
  EXPECT_FALSE(base_of_a != base_of_b);
}

// --- saving ---

TEST(RegisterKeypoint, SignalIsSavedWithIdAndName) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(2, "clk_en");
  keypoint.add_attribute("note", "x");
  EXPECT_EQ(saved([&](KPT_XML_WRITER& writer) { return keypoint.save_register(writer); }),
            "    <key_point id=\"2\" type=\"register\">\n"
            "    <name>clk_en</name>\n"
            "  </key_point>\n");
}

TEST(RegisterKeypoint, BlockInstanceIsSavedWithEntityAndTypeToo) {
  const KPT_REGISTER_KEYPOINT_IMPL keypoint(1, "q_a", "u1", "dff");
  EXPECT_EQ(saved([&](KPT_XML_WRITER& writer) { return keypoint.save_register(writer); }),
            "<key_point id=\"1\" type=\"register\">\n"
            "    <name>q_a</name>\n"
            "    <entity>u1</entity>\n"
            "    <reg_type>dff</reg_type>\n"
            "  </key_point>\n");
}

// --- the handle ---

TEST(RegisterHandle, IsNullUnlessItIsGivenARegister) {
  EXPECT_TRUE(KPT_REGISTER_KEYPOINT().is_null());
  EXPECT_TRUE(KPT_REGISTER_KEYPOINT(nullptr).is_null());
  KPT_REGISTER_KEYPOINT_IMPL keypoint(1, "a");
  EXPECT_FALSE(KPT_REGISTER_KEYPOINT(&keypoint).is_null());
}

TEST(RegisterHandle, IsOnePointer) { EXPECT_EQ(sizeof(KPT_REGISTER_KEYPOINT), sizeof(void*)); }

TEST(RegisterHandle, ForwardsItsQueries) {
  KPT_REGISTER_KEYPOINT_IMPL instance(1, "a", "u1", "dff");
  const KPT_REGISTER_KEYPOINT handle(&instance);
  EXPECT_EQ(handle.get_name(), "a");
  EXPECT_EQ(handle.get_entity_name(), "u1");
  EXPECT_EQ(handle.get_type(), "dff");
  EXPECT_FALSE(handle.is_signal());
  EXPECT_TRUE(handle.is_block_instance());
}

TEST(RegisterHandle, ForwardsItsEdits) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(1, "a");
  const KPT_REGISTER_KEYPOINT handle(&keypoint);
  EXPECT_TRUE(handle.substitute_with_instance("b", "u1", "dff"));
  EXPECT_TRUE(keypoint.register_is_blockinstance());
  EXPECT_TRUE(handle.substitute_with_signal("c"));
  EXPECT_EQ(keypoint.get_element_name(), "c");
  EXPECT_TRUE(handle.is_signal());
  EXPECT_TRUE(handle.add_attribute("note", "x"));
  EXPECT_EQ(handle.get_attribute("note"), "x");
  EXPECT_TRUE(handle.remove_attribute("note"));
  EXPECT_FALSE(handle.remove_attribute("note"));
}

TEST(RegisterHandle, CopyPointsToTheSameRegister) {
  KPT_REGISTER_KEYPOINT_IMPL keypoint(1, "a");
  const KPT_REGISTER_KEYPOINT handle(&keypoint);
  const KPT_REGISTER_KEYPOINT copy = handle;
  EXPECT_TRUE(copy.substitute_with_signal("b"));
  EXPECT_EQ(handle.get_name(), "b");
}

}  // namespace
