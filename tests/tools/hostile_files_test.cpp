// No file makes a command crash or leave half a result.
#include "tool.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class Hostile : public TOOL_TEST {
 protected:
  // Every command that reads a database exits with the same code and names the file.
  void expect_unreadable(const std::string& message) const {
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{"info", "x.xml"},
                                               {"show", "x.xml", "a"},
                                               {"list", "x.xml"},
                                               {"diff", "x.xml", "x.xml"},
                                               {"check", "x.xml"},
                                               {"unite", "x.xml", "x.xml", "-o", "out"},
                                               {"export", "x.xml", "--json", "-o", "out"},
                                               {"report", "x.xml", "-o", "out"}}) {
      const RUN_RESULT result = kptdb(command);
      EXPECT_EQ(result.exit_code, 3) << command.front() << ": " << result.err;
      EXPECT_EQ(result.out, "") << command.front();
      EXPECT_THAT(result.err, HasSubstr("x.xml")) << command.front();
      EXPECT_THAT(result.err, HasSubstr(message)) << command.front();
    }
    EXPECT_THAT(names(), ElementsAre("x.xml"));
  }
  std::string database() const {
    record("x.xml", DESIGN);
    return read("x.xml");
  }
  std::string with(const std::string& from, const std::string& to) const {
    std::string text = database();
    return text.replace(text.find(from), from.size(), to);
  }
};

TEST_F(Hostile, AMissingFileIsNamed) {
  for (const char* command : {"info", "list", "check"}) {
    const RUN_RESULT result = kptdb({command, "x.xml"});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_EQ(result.err, "kptdb: x.xml: No such file or directory\n");
  }
}

TEST_F(Hostile, ADirectoryIsRefused) {
  std::filesystem::create_directory(folder() / "x.xml");
  expect_unreadable("x.xml: a directory");
}

TEST_F(Hostile, AnEmptyFileIsRefused) {
  write("x.xml", "");
  expect_unreadable("x.xml:1: the file is empty");
}

TEST_F(Hostile, ABinaryFileIsASyntaxError) {
  write("x.xml", std::string("\x7f"
                             "ELF\x00\x01\x02\xff\xfe<kpt_db>",
                             17));
  expect_unreadable("line number 1");
}

TEST_F(Hostile, AFileCutShortAnywhereIsASyntaxError) {
  const std::string text = database();
  for (std::size_t size = 1; size + 2 < text.size(); size += text.size() / 23) {
    write("x.xml", text.substr(0, size));
    const RUN_RESULT result = kptdb({"check", "x.xml"});
    EXPECT_EQ(result.exit_code, 3) << size;
    EXPECT_THAT(result.err, HasSubstr("line number")) << size;
  }
}

TEST_F(Hostile, AFileWithAByteChangedAnywhereIsReadOrRefused) {
  const std::string text = database();
  for (std::size_t at = 3; at < text.size(); at += text.size() / 29) {
    std::string changed = text;
    changed[at] = static_cast<char>(at % 2 == 0 ? 0xFF : '0' + at % 40);
    write("x.xml", changed);
    for (const char* command : {"info", "check", "list"}) {
      const RUN_RESULT result = kptdb({command, "x.xml"});
      EXPECT_THAT(result.exit_code, testing::AnyOf(0, 1, 3)) << command << " at " << at << ": " << result.err;
    }
  }
}

TEST_F(Hostile, AnotherKindOfDocumentIsRefused) {
  write("x.xml", "<html name=\"page\"><body/></html>\n");
  expect_unreadable("x.xml:1: not a keypoint database");
}

TEST_F(Hostile, ADatabaseWithoutANameIsRefused) {
  write("x.xml", with("<kpt_db name=\"design\">", "<kpt_db>"));
  expect_unreadable("x.xml:1: the database has no name");
}

TEST_F(Hostile, SomethingBehindTheTransformationsIsRefused) {
  write("x.xml", with("</kpt_db>", "<more/></kpt_db>"));
  expect_unreadable("something follows the transformations");
}

// The library reads such an element as transformations and continues. The tool does the same and issues a warning.
TEST_F(Hostile, AnUnexpectedElementIsReadAsTransformationsWithAWarning) {
  std::string text = with("<transformations_set>", "<maps>");
  write("x.xml", text.replace(text.find("</transformations_set>"), 22, "</maps>"));
  const RUN_RESULT result = kptdb({"info", "x.xml"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.err, "kptdb: x.xml: warning: an unexpected element is read as transformations\n");
  EXPECT_THAT(kptdb({"check", "x.xml"}).out, HasSubstr("error [element-unexpected] element maps"));
}

TEST_F(Hostile, AnUnexpectedElementBeforeTheRegistersIsRefusedWithItsLine) {
  write("x.xml", with("<key_points_set type=\"reference\">", "<stranger/>\n<key_points_set type=\"reference\">"));
  const RUN_RESULT result = kptdb({"info", "x.xml"});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_THAT(result.err, HasSubstr("kptdb: x.xml:2: something follows the transformations\n"));
}

TEST_F(Hostile, AnUnescapedNameIsASyntaxError) {
  write("x.xml", with("<name>carry", "<name>car<ry"));
  expect_unreadable("line number");
}

// The size is refused before memory is allocated for it.
TEST_F(Hostile, TablesOfASizeThatNoFileCanListAreRefused) {
  write("x.xml", with("num_states=\"3\" num_reference_registers=\"2\"",
                      "num_states=\"65535\" num_reference_registers=\"65535\""));
  expect_unreadable("the state tables claim 4295032830 entries");
  EXPECT_THAT(kptdb({"info", "x.xml"}).err, testing::ContainsRegex("x.xml:[0-9][0-9]+: the state tables"));
}

TEST_F(Hostile, IdsBeyondAllNumbersAreReadAndObjectedTo) {
  write("x.xml", with("<key_point id=\"0\"", "<key_point id=\"99999999999999999999\""));
  EXPECT_EQ(kptdb({"info", "x.xml"}).exit_code, 0);
  EXPECT_EQ(kptdb({"check", "x.xml"}).exit_code, 1);
  write("x.xml", with("<key_point id=\"0\"", "<key_point id=\"-5\""));
  EXPECT_EQ(kptdb({"info", "x.xml"}).exit_code, 0);
}

TEST_F(Hostile, EntitiesThatGrowAreRefused) {
  write("x.xml",
        "<!DOCTYPE kpt_db [<!ENTITY a \"aaaaaaaaaaaaaaaaaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
        "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\">"
        "<!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\"><!ENTITY f \"&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;\">]>"
        "<kpt_db name=\"x\"><key_points_set type=\"reference\"><key_point id=\"1\" type=\"register\">"
        "<name>&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;</name></key_point></key_points_set></kpt_db>");
  EXPECT_EQ(kptdb({"info", "x.xml"}).exit_code, 3);
}

TEST_F(Hostile, FilesOutsideAreNotRead) {
  write("x.xml", "<!DOCTYPE kpt_db [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><kpt_db name=\"&a;\"/>");
  EXPECT_EQ(kptdb({"info", "x.xml"}).exit_code, 3);
}

TEST_F(Hostile, AnotherEncodingIsRead) {
  const std::string text = database();
  std::string wide("\xFF\xFE", 2);
  for (const char c : text) {
    wide += c;
    wide += '\0';
  }
  write("x.xml", wide);
  EXPECT_EQ(kptdb({"info", "x.xml"}).exit_code, 0);
  EXPECT_EQ(good({"check", "x.xml"}), "x.xml: no findings\n");
}

TEST_F(Hostile, NamesThatWouldSteerATerminalAreShownEscaped) {
  write("x.xml", with("<name>carry<", "<name>c&#9;&#10;\xC3\xA9<"));
  const RUN_RESULT result = kptdb({"list", "x.xml"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.out, HasSubstr("c\\x09\\x0A"));
  EXPECT_EQ(kptdb({"export", "x.xml", "--json"}).exit_code, 0);
  EXPECT_EQ(kptdb({"unite", "x.xml", "x.xml", "-o", "united.xml"}).exit_code, 0);
  EXPECT_THAT(kptdb({"list", "united.xml"}).out, HasSubstr("c\\x09\\x0A"));
}

TEST_F(Hostile, DeepNestingEndsWithoutACrash) {
  std::string text = "<kpt_db name=\"x\"><key_points_set>";
  const int depth = 20000;
  for (int k = 0; k < depth; ++k) {
    text += "<a>";
  }
  for (int k = 0; k < depth; ++k) {
    text += "</a>";
  }
  write("x.xml", text + "</key_points_set></kpt_db>");
  EXPECT_THAT(kptdb({"check", "x.xml"}).exit_code, testing::AnyOf(0, 1, 3));
}

TEST_F(Hostile, ADeviceIsRefused) {
  const RUN_RESULT result = kptdb({"info", "/dev/zero"});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_THAT(result.err, StartsWith("kptdb: /dev/zero: not a regular file"));
  EXPECT_EQ(kptdb({"record", "/dev/zero", "--name", "x", "-o", "x.xml"}).exit_code, 3);
}

}  // namespace
