#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_xml_writer.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::make_table;
using kpt_test::REGISTERS;
using testing::HasSubstr;
using testing::Not;

using MAP = KPT_TRANSFORMATION_IMPL;

class TransformationXml : public testing::Test {
 protected:
  ~TransformationXml() override { std::filesystem::remove(m_path); }

  std::string saved(const MAP& map) {
    {
      KPT_XML_WRITER writer(m_path.string());
      EXPECT_TRUE(writer.start_file());
      EXPECT_TRUE(map.save_transformation(writer));
    }
    std::ifstream file(m_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  REGISTERS k;

 private:
  const std::filesystem::path m_path =
      std::filesystem::temp_directory_path() /
      (std::string("kpt_") + testing::UnitTest::GetInstance()->current_test_info()->name() + ".xml");
};

TEST_F(TransformationXml, AOneToOneMapIsWrittenWithOneStateASide) {
  KPT_KEYPOINT* r = k["r"];
  KPT_KEYPOINT* t = k["t"];
  EXPECT_EQ(saved(MAP(r, t)),
            "    <transformation elim_type=\"not_eliminated\">\n"
            "    <kp_set type=\"reference\">\n"
            "    <kp_state index=\"0\">\n"
            "    <noninverts>\n"
            "        <kp id=\"1\">   </kp>\n"
            "    </noninverts>\n"
            "</kp_state>\n"
            "  </kp_set>\n"
            "        <kp_set type=\"transformed\">\n"
            "        <kp_state index=\"0\">\n"
            "        <noninverts>\n"
            "            <kp id=\"2\">     </kp>\n"
            "        </noninverts>\n"
            "  </kp_state>\n"
            "  </kp_set>\n"
            "  </transformation>\n");
}

TEST_F(TransformationXml, EachStatusHasItsWordAndAnotherValueNone) {
  const char* const words[] = {"not_eliminated", "stuck_at_zero", "stuck_at_one", "no_fanout", "eliminated"};
  for (int status = 0; status < 5; ++status) {
    EXPECT_THAT(saved(MAP(k.side(""), k.side(""), static_cast<KPT_ELIM_ENUM>(status))),
                HasSubstr("<transformation elim_type=\"" + std::string(words[status]) + "\">"));
  }
  for (const int status : {-1, 5, 255}) {
    EXPECT_THAT(saved(MAP(k.side(""), k.side(""), static_cast<KPT_ELIM_ENUM>(status))), HasSubstr("<transformation>"));
  }
}

TEST_F(TransformationXml, AGroupWithoutIdsIsLeftOutItsIndexIsNot) {
  const std::string text = saved(MAP(k.side("~a|null~null|~"), k.side(""), KPT_NOT_ELIMINATED));
  EXPECT_THAT(text, Not(HasSubstr("noninverts")));
  EXPECT_THAT(text, HasSubstr("<inverts>"));
  EXPECT_THAT(text, HasSubstr("<kp_state index=\"2\">"));
  EXPECT_EQ(text.find("<inverts>"), text.rfind("<inverts>"));
}

TEST_F(TransformationXml, ANullIsSkippedAKeypointThatIsNoRegisterHasAnId) {
  NI_PAIR_VECTOR side = k.side("null a null~");
  side[0].first.push_back(k.no_register("n"));
  const std::string text = saved(MAP(side, k.side(""), KPT_NOT_ELIMINATED));
  EXPECT_THAT(text, HasSubstr("<kp id=\"1\">"));
  EXPECT_THAT(text, HasSubstr("<kp id=\"2\">"));
  EXPECT_THAT(text, Not(HasSubstr("<kp id=\"0\">")));
}

TEST_F(TransformationXml, TheTableOfAStateMachineIsWrittenThatOfAPlainMapNever) {
  EXPECT_THAT(
      saved(MAP(k.side("a~"), k.side("x~"), make_table({"0 0", "1 1"}), KPT_NOT_ELIMINATED)),
      HasSubstr("<state_table num_states=\"2\" num_reference_registers=\"1\" num_transformed_registers=\"1\">"));
  MAP plain(k["a"], k["x"]);
  plain.update_state_table(1, 1);
  EXPECT_THAT(saved(plain), Not(HasSubstr("state_table")));
}

TEST_F(TransformationXml, EveryPairOfAVeryLongSideIsWrittenOnceWithItsIndexIn16Bits) {
  const std::string text = saved(MAP(NI_PAIR_VECTOR(65538), k.side(""), KPT_NOT_ELIMINATED));
  std::size_t count = 0;
  for (std::size_t at = text.find("<kp_state"); at != std::string::npos; at = text.find("<kp_state", at + 1)) {
    ++count;
  }
  EXPECT_EQ(count, 65538U);
  const std::size_t again = text.find("<kp_state index=\"0\">", text.find("<kp_state index=\"65535\">"));
  ASSERT_NE(again, std::string::npos);
  EXPECT_NE(text.find("<kp_state index=\"1\">", again), std::string::npos);
}

}  // namespace
