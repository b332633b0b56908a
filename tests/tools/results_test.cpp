// unite and export: files that are complete or not written.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using JSON = nlohmann::json;

std::string associate(const std::string& r, const std::string& t) {
  return R"({"event":"associate","reference":")" + r + R"(","transformed":")" + t + "\"}\n";
}

class Unite : public TOOL_TEST {};

TEST_F(Unite, SpansAllStages) {
  record("1.xml", associate("a", "b"));
  record("2.xml", associate("b", "c"));
  record("3.xml", associate("c", "d"));
  EXPECT_EQ(good({"unite", "1.xml", "2.xml", "3.xml", "-o", "all.xml"}),
            "stage 2 starts from 1 registers, 1 of them known to stage 1\n"
            "stage 3 starts from 1 registers, 1 of them known to stage 2\n"
            "all.xml: 3 stages united, 1 reference register\n");
  EXPECT_THAT(good({"show", "all.xml", "a"}), HasSubstr("transformed with the same value: d\n"));
  EXPECT_EQ(good({"check", "all.xml"}), "all.xml: no findings\n");
}

TEST_F(Unite, SaysSoAsJson) {
  record("1.xml", associate("a", "b"));
  record("2.xml", associate("b", "c"));
  EXPECT_EQ(JSON::parse(good({"unite", "1.xml", "2.xml", "-o", "all.xml", "--json"})),
            JSON::parse(R"({"format":1,"written":"all.xml","stages":["1.xml","2.xml"],
                            "fits":["stage 2 starts from 1 registers, 1 of them known to stage 1"],"warnings":[]})"));
}

// Registers that only the second stage has get ids of their own, because a file
// identifies registers only by ids.
TEST_F(Unite, GivesNewRegistersNewIds) {
  record("1.xml", associate("a", "b") + associate("p", "q"));
  record("2.xml", associate("b", "c") + associate("new1", "n1") + associate("new2", "n2"));
  good({"unite", "1.xml", "2.xml", "-o", "all.xml"});
  EXPECT_EQ(good({"check", "all.xml"}), "all.xml: no findings\n");
  EXPECT_THAT(good({"show", "all.xml", "new1"}), HasSubstr("same value: n1\n"));
  EXPECT_THAT(good({"show", "all.xml", "p"}), HasSubstr("same value: q\n"));
}

TEST_F(Unite, MayWriteOverAStage) {
  record("1.xml", associate("a", "b"));
  record("2.xml", associate("b", "c"));
  good({"unite", "1.xml", "2.xml", "-o", "1.xml"});
  EXPECT_THAT(good({"show", "1.xml", "a"}), HasSubstr("same value: c\n"));
}

TEST_F(Unite, WritesNothingWhenAStageCannotBeRead) {
  record("1.xml", associate("a", "b"));
  write("2.xml", "<kpt_db name=\"x\"><key_points_set>");
  write("all.xml", "what was there");
  const RUN_RESULT result = kptdb({"unite", "1.xml", "2.xml", "-o", "all.xml"});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_THAT(result.err, HasSubstr("2.xml at line number 1"));
  EXPECT_EQ(read("all.xml"), "what was there");
  EXPECT_THAT(names(), ElementsAre("1.xml", "2.xml", "all.xml"));
}

TEST_F(Unite, WritesNothingWhenIdsRunOut) {
  record("1.xml", associate("a", "b"));
  std::string text = read("1.xml");
  for (std::size_t at = 0; (at = text.find("id=\"0\"", at)) != std::string::npos;) {
    text.replace(at, 6, "id=\"2147483647\"");
  }
  write("1.xml", text);
  record("2.xml", associate("b", "c") + associate("x", "y"));
  const RUN_RESULT result = kptdb({"unite", "1.xml", "2.xml", "-o", "all.xml"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("too large"));
  EXPECT_FALSE(exists("all.xml"));
}

class Export : public TOOL_TEST {
 protected:
  void SetUp() override { record("d.xml", DESIGN); }
};

TEST_F(Export, JsonHasAllFacts) {
  const JSON json = JSON::parse(good({"export", "d.xml", "--format", "json"}));
  EXPECT_EQ(json["name"], "design");
  EXPECT_EQ(json["registers"].size(), 15U);
  EXPECT_EQ(json["maps"].size(), 6U);
  EXPECT_EQ(JSON::parse(good({"export", "d.xml", "--json"})), json);
  EXPECT_EQ(kptdb({"export", "d.xml", "--json", "--format", "csv"}).exit_code, 2);
}

TEST_F(Export, QuotesInCsvWhatWouldReadAsTwoCells) {
  record("d.xml", R"({"event":"associate","reference":"a,b","transformed":"c d"})"
                  "\n");
  const std::string csv = good({"export", "d.xml", "--format", "csv"});
  EXPECT_THAT(csv, HasSubstr("\n0,1:1,,reference,0,noninverting,0,\"a,b\",signal,,,,\n"));
  EXPECT_THAT(csv, HasSubstr("\n0,1:1,,transformed,0,noninverting,0,c d,signal,,,,\n"));
}

TEST_F(Export, GivesCsvOneRowAPlaceOneAStateAndOneForARegisterWithoutAMap) {
  record(
      "d.xml",
      R"({"event":"map","reference":[{"same":["p"],"inverse":["q"]}],"transformed":[{"same":["s"]}],"states":[["0","1"],["1","0"]]})"
      "\n"
      R"({"event":"register","side":"transformed","register":"alone"})"
      "\n");
  EXPECT_EQ(good({"export", "d.xml", "--format", "csv"}),
            "map,kind,elimination,side,index,group,id,name,register_kind,entity,type,reference_code,transformed_code\n"
            "0,fsm,,reference,0,noninverting,0,p,signal,,,,\n"
            "0,fsm,,reference,0,inverting,1,q,signal,,,,\n"
            "0,fsm,,transformed,0,noninverting,0,s,signal,,,,\n"
            "0,state,,,0,,,,,,,0,1\n"
            "0,state,,,1,,,,,,,1,0\n"
            ",,,transformed,,,1,alone,signal,,,,\n");
}

TEST_F(Export, CsvHasARowForEveryPlaceAndState) {
  const std::string csv = good({"export", "d.xml", "--format", "csv"});
  EXPECT_THAT(csv, testing::StartsWith("map,kind,elimination,side,index,group,id,name,register_kind,entity,type,"
                                       "reference_code,transformed_code\n"));
  EXPECT_THAT(csv, HasSubstr("\n0,n:m,,transformed,0,inverting,9,count_dup,signal,,,,\n"));
  EXPECT_THAT(csv, HasSubstr(",eliminated,stuck_at_zero,reference,0,noninverting,3,zero,signal,,,,\n"));
  EXPECT_THAT(csv, HasSubstr(",1:1,,reference,0,noninverting,5,u1/q,instance,u1,dff,,\n"));
  EXPECT_THAT(csv, HasSubstr("\n5,state,,,1,,,,,,,01,010\n"));
}

TEST_F(Export, DotIsAPictureThatGraphvizReads) {
  good({"export", "d.xml", "--format", "dot", "-o", "d.dot"});
  EXPECT_THAT(read("d.dot"), HasSubstr("\"map 0\" -> \"t count_dup\" [style=dashed, label=inverted];"));
  const RUN_RESULT result = shell("if command -v dot >/dev/null; then dot -Tplain d.dot; else echo node; fi");
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("node"));
}

TEST_F(Export, DotShowsTheNeighbourhoodOfARegister) {
  const std::string dot = good({"export", "d.xml", "--format", "dot", "--around", "carry"});
  EXPECT_THAT(dot, HasSubstr("\"r carry\" [label=\"carry\", style=bold];"));
  EXPECT_THAT(dot, HasSubstr("\"r count[1]\""));
  EXPECT_THAT(dot, Not(HasSubstr("count[0]")));
  EXPECT_EQ(kptdb({"export", "d.xml", "--format", "dot", "--around", "cary"}).err,
            "kptdb: d.xml: no register cary; did you mean carry?\n");
  EXPECT_EQ(kptdb({"export", "d.xml", "--format", "csv", "--around", "carry"}).exit_code, 2);
}

// Most significant bit first, whatever the order of the columns.
TEST_F(Export, EncfileHasTheStateEncodings) {
  EXPECT_EQ(good({"export", "d.xml", "--format", "encfile", "--module", "top"}),
            ".fsm top state\n.map 00 001\n.map 01 010\n.map 10 100\n");
  EXPECT_THAT(good({"export", "d.xml", "--format", "encfile"}), testing::StartsWith(".fsm design state\n"));
  EXPECT_EQ(kptdb({"export", "d.xml", "--format", "encfile", "--module", "a b"}).exit_code, 1);
  EXPECT_EQ(kptdb({"export", "d.xml", "--format", "dot", "--module", "top"}).exit_code, 2);
}

TEST_F(Export, EncfileNamesLoneRegistersAndRefusesTwoOfAName) {
  const std::string fsm =
      R"({"event":"associate_fsm","reference":["m"],"transformed":["x","y"],"states":[["0","01"],["1","11"]]})"
      "\n";
  record("e.xml", fsm);
  EXPECT_EQ(good({"export", "e.xml", "--format", "encfile"}), ".fsm design m\n.map 0 01\n.map 1 11\n");
  record("e.xml",
         fsm + R"({"event":"associate_fsm","reference":["m[0]"],"transformed":["z"],"states":[["0","1"],["1","0"]]})");
  const RUN_RESULT result = kptdb({"export", "e.xml", "--format", "encfile", "-o", "e.enc"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("two state machines are called m"));
  EXPECT_FALSE(exists("e.enc"));
}

TEST_F(Export, WritesAFileWholeOrNotAtAll) {
  good({"export", "d.xml", "--format", "csv", "-o", "d.csv"});
  EXPECT_EQ(read("d.csv"), good({"export", "d.xml", "--format", "csv"}));
  EXPECT_EQ(kptdb({"export", "d.xml", "--format", "csv", "-o", "nowhere/d.csv"}).exit_code, 1);
  EXPECT_EQ(kptdb({"export", "d.xml", "--format", "dot", "--around", "cary", "-o", "d.csv"}).exit_code, 1);
  EXPECT_EQ(read("d.csv"), good({"export", "d.xml", "--format", "csv"}));
  EXPECT_THAT(names(), ElementsAre("d.csv", "d.xml"));
}

}  // namespace
