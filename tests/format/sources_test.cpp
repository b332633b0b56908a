// Every way to load a file gives the same result: the scanner of plain files, the
// general source, and the document tree, with which the others are compared.
#include <gmock/gmock.h>

#include <filesystem>

#include "db/kpt/kpt_composition.h"
#include "db/kpt/kpt_xml_reader.h"
#include "tests/format/databases.h"
#include "tests/format/large_files.h"
#include "tests/format/mutants.h"
#include "tests/support/host_lines.h"
#include "tests/support/load_outcome.h"
#include "tests/support/seed.h"
#include "tests/union/random_stage.h"

namespace {

using namespace kpt_test;

class LoadSources : public testing::Test {
 protected:
  void expect_agreement(const std::string& path) {
    const LOAD_OUTCOME document = load_outcome(path, LOAD_WAY::DOCUMENT);
    EXPECT_EQ(load_outcome(path, LOAD_WAY::SCANNER_FIRST), document);
    EXPECT_EQ(load_outcome(path, LOAD_WAY::GENERAL_SOURCE), document);
    m_loaded += document.is_loaded ? 1 : 0;
  }

  void expect_sources_agree(const std::string& path) {
    const LOAD_OUTCOME outcome = load_outcome(path, LOAD_WAY::SCANNER_FIRST);
    EXPECT_EQ(load_outcome(path, LOAD_WAY::GENERAL_SOURCE), outcome);
    m_loaded += outcome.is_loaded ? 1 : 0;
  }

  FOLDER m_folder;
  int m_loaded = 0;

 private:
  const KPT_XML_READER m_reader;  // the parser starts once
};

std::vector<std::string> all_data_files() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(KPT_TEST_DATA)) {
    files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

TEST_F(LoadSources, AgreeOnEveryFileThatTheTestsKeep) {
  for (const std::string& path : all_data_files()) {
    SCOPED_TRACE(path);
    expect_agreement(path);
  }
}

TEST_F(LoadSources, AgreeOnMutants) {
  std::vector<std::string> files;
  for (const std::string& path : all_data_files()) {
    files.push_back(read_file(path));
  }
  MUTANTS mutants(seed(), files);
  const int count = steps(2000);
  for (int k = 0; k < count && !HasFailure(); ++k) {
    const std::string mutant = mutants.next();
    SCOPED_TRACE("mutant " + std::to_string(k) + ":\n" + mutant);
    expect_agreement(m_folder.file_of(mutant));
  }
  EXPECT_GT(m_loaded, count / 10) << "the mutants are hardly ever files";
}

// KPT_STEPS is their size in KB.
TEST_F(LoadSources, AgreeOnLargeFilesOfEveryKind) {
  const std::vector<LARGE_FILE> files = large_files(static_cast<std::size_t>(steps(100)) * 1000);
  for (const LARGE_FILE& file : files) {
    SCOPED_TRACE(file.kind);
    const std::string path = m_folder.file_of(file.text);
    file.is_for_document ? expect_agreement(path) : expect_sources_agree(path);
  }
  EXPECT_EQ(m_loaded, static_cast<int>(files.size()) - 1) << "all but the one with elements behind the maps";
}

// Values inside values, whose numbers have blanks, signs, zeros and other characters around them.
TEST_F(LoadSources, AgreeOnNestedValues) {
  constexpr int STATES = 400;
  constexpr unsigned COLUMNS = 4;
  std::mt19937 random(seed());
  const auto piece = [&] {
    constexpr std::string_view CHARACTERS = "001119+- \t\nx/:";
    std::string text;
    for (unsigned k = static_cast<unsigned>(random() % 6); k > 0; --k) {
      text += CHARACTERS[random() % CHARACTERS.size()];
    }
    return text;
  };
  std::string states;
  for (int state = 0; state < STATES; ++state) {
    std::string value;
    for (unsigned column = 0; column < COLUMNS; ++column) {
      value.insert(0, "<value index=\"" + std::to_string(column) + "\">" + piece());
      value += piece();
      value += "</value>";
      value += piece();
    }
    states += "<state index=\"" + std::to_string(state) + "\"><reference>" + value + "</reference></state>";
  }
  expect_agreement(
      m_folder.file_of("<kpt_db name=\"d\"><transformations_set><transformation><state_table num_states=\"" +
                       std::to_string(STATES) + "\" num_reference_registers=\"" + std::to_string(COLUMNS) + "\">" +
                       states + "</state_table></transformation></transformations_set></kpt_db>"));
  EXPECT_EQ(m_loaded, 1);
}

// Two stages of a random flow with names and attributes of any characters.
class RandomDatabases : public LoadSources {
 protected:
  DATABASE stage(const std::string& name, char r, char t) {
    DATABASE db = new_database(name);
    RECORDER(*db, m_random, r, t, m_renamed).record_anything();
    for (KPT_KEYPOINT_SET_IMPL* set : {db->get_reference_set(), db->get_transformed_set()}) {
      for (KPT_KEYPOINT* keypoint : set->get_list_of_keypoints()) {
        make_odd(*keypoint);
      }
    }
    for (KPT_TRANSFORMATION_IMPL* map : db->get_transformation_set()->get_list_of_register_transformations()) {
      if (below(4) == 0) {
        map->add_attribute(odd_text(), odd_text());
      }
    }
    return db;
  }

  // As both ways to save write it, and a mutant of each.
  void expect_agreement_on(KPT_KEYPOINTS_DB_IMPL& db) {
    const std::string path = m_folder.file("saved.xml");
    for (const bool is_atomic : {false, true}) {
      if (!is_saved(db, path, is_atomic)) {
        continue;  // a name that no file can hold
      }
      const std::string text = read_file(path);
      MUTANTS mutants(static_cast<unsigned>(m_random()), {text});
      for (const std::string& file : {text, mutants.next()}) {
        SCOPED_TRACE(file);
        expect_agreement(m_folder.file_of(file));
      }
    }
  }

  std::mt19937 m_random{seed()};
  RENAMED m_renamed;

 private:
  static bool is_saved(KPT_KEYPOINTS_DB_IMPL& db, const std::string& path, bool is_atomic) {
    const HOST_LINES not_shown;
    return is_atomic ? db.save_atomically(path) : db.save(path);
  }

  unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }

  std::string odd_text() {
    constexpr const char* TEXTS[] = {
        "count<3>", "a&b",      "a&amp;b",      "\"q\" 'q'",        "]]>",  " blanks  ", "tab\t.", "two\nlines",
        "cr\r.",    "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\x01", "\xFF",      "&#10;"};
    return TEXTS[below(std::size(TEXTS))];
  }

  void make_odd(KPT_KEYPOINT& keypoint) {
    if (below(8) == 0) {
      keypoint.set_element_name(odd_text());
    }
    if (below(8) == 0) {
      static_cast<KPT_REGISTER_KEYPOINT_IMPL&>(keypoint).add_attribute("a" + std::to_string(below(3)), odd_text());
    }
  }
};

TEST_F(RandomDatabases, AndTheirUnionsAgree) {
  const int count = steps(100);
  for (int k = 0; k < count && !HasFailure(); ++k) {
    const DATABASE first = stage("first", 'a', 'b');
    const DATABASE second = stage("second", 'b', 'c');
    expect_agreement_on(*first);
    first->unite_db(*second);
    expect_agreement_on(*first);
  }
  EXPECT_GT(m_loaded, count);
}

TEST_F(RandomDatabases, AndTheirCompositionsAgree) {
  const int count = steps(100);
  int composed = 0;
  for (int k = 0; k < count && !HasFailure(); ++k) {
    const DATABASE first = stage("first", 'a', 'b');
    const DATABASE second = stage("second", 'b', 'c');
    const DATABASE result = new_database("result");
    KPT_COMPOSITION_OPTIONS options;
    options.keeps_unrecorded = true;
    if (KPT_COMPOSITION({first.get(), second.get()}, options).compose(*result)) {
      expect_agreement_on(*result);
      ++composed;
    }
  }
  EXPECT_GT(composed, count / 10) << "hardly any stages compose";
}

}  // namespace
