// Databases from a client's bytes: memory, and streams that can be read only once.
#include <gmock/gmock.h>

#include "db/kpt/kpt.h"
#include "tests/format/databases.h"
#include "tests/support/host_lines.h"

namespace {

using namespace kpt_test;
using testing::ElementsAre;

// Counts the bytes that are read. It can be read once, or several times.
class COUNTED_BYTES : public KPT_BYTES {
 public:
  COUNTED_BYTES(std::string_view bytes, bool can_rewind) : m_bytes(bytes), m_can_rewind(can_rewind) {}

  // Only a few bytes at a time, like a pipe.
  std::ptrdiff_t read(char* to, std::size_t size) override {
    const std::ptrdiff_t count = m_bytes.read(to, std::min<std::size_t>(size, 7));
    m_count += static_cast<std::size_t>(count);
    return count;
  }
  bool rewind() override { return m_can_rewind && m_bytes.rewind(); }
  std::size_t count() const { return m_count; }

 private:
  KPT_MEMORY_BYTES m_bytes;
  bool m_can_rewind;
  std::size_t m_count = 0;
};

class FAILING_BYTES : public KPT_BYTES {
 public:
  std::ptrdiff_t read(char*, std::size_t) override { return -1; }
  bool rewind() override { return true; }
};

// Whole, but for the end: reading it is an error.
class BYTES_WITHOUT_AN_END : public KPT_BYTES {
 public:
  explicit BYTES_WITHOUT_AN_END(std::string_view bytes) : m_bytes(bytes) {}
  std::ptrdiff_t read(char* to, std::size_t size) override {
    const std::ptrdiff_t count = m_bytes.read(to, size);
    return count > 0 ? count : -1;
  }
  bool rewind() override { return m_bytes.rewind(); }

 private:
  KPT_MEMORY_BYTES m_bytes;
};

std::string three_maps() { return read_file(data_file("three_maps.xml")); }

std::string saved_by(const KPT_UNREGISTERED_DB& db) {
  const FOLDER folder;
  EXPECT_TRUE(db.save(folder.file("again.xml")));
  return read_file(folder.file("again.xml"));
}

TEST(Bytes, InMemoryBecomeADatabase) {
  const std::string file = three_maps();
  KPT_MEMORY_BYTES bytes(file);
  EXPECT_EQ(saved_by(KPT_UNREGISTERED_DB::load(bytes, "memory")), file);
}

TEST(Bytes, OfAStreamBecomeADatabase) {
  const std::string file = three_maps();
  COUNTED_BYTES bytes(file, false);
  EXPECT_EQ(saved_by(KPT_UNREGISTERED_DB::load(bytes, "stream")), file);
  EXPECT_EQ(bytes.count(), file.size());
}

TEST(Bytes, OfAPlainFileAreReadTwice) {
  const std::string file = three_maps();
  COUNTED_BYTES bytes(file, true);
  EXPECT_EQ(saved_by(KPT_UNREGISTERED_DB::load(bytes, "twice")), file);
  EXPECT_EQ(bytes.count(), 2 * file.size());
}

TEST(Bytes, WithAnErrorTellThePlaceUnderTheNameThatIsShown) {
  const HOST_LINES lines;
  KPT_MEMORY_BYTES bytes("<kpt_db name=\"d\">\n  <a>\n</kpt_db>\n");
  KPT_LOAD_PROBLEM problem;
  EXPECT_TRUE(KPT_UNREGISTERED_DB::load(bytes, "shown name", &problem).is_null());
  EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NOT_WELL_FORMED);
  EXPECT_EQ(problem.line, 3);
  EXPECT_EQ(problem.column, 3);
  EXPECT_EQ(problem.message, "expected end of tag 'a'");
  EXPECT_THAT(lines.errors(), ElementsAre("Syntax error in XML Keypoint Database shown name at line number 3, column "
                                          "number 3 : expected end of tag 'a'"));
}

TEST(Bytes, ThatCannotBeReadToTheirEndAreNoDatabase) {
  const HOST_LINES lines;
  const std::string file = three_maps();
  BYTES_WITHOUT_AN_END bytes(file);
  KPT_LOAD_PROBLEM problem;
  EXPECT_TRUE(KPT_UNREGISTERED_DB::load(bytes, "bytes", &problem).is_null());
  EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NOT_WELL_FORMED);
}

TEST(Bytes, ThatCannotBeReadAreNoDatabase) {
  const HOST_LINES lines;
  FAILING_BYTES bytes;
  KPT_LOAD_PROBLEM problem;
  EXPECT_TRUE(KPT_UNREGISTERED_DB::load(bytes, "broken", &problem).is_null());
  EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NOT_WELL_FORMED);
}

TEST(Bytes, WithSomethingBehindTheTransformationsSaySo) {
  for (const std::string file :
       {"<a name=\"d\"><transformations_set/><b/></a>", "<a name='d'><transformations_set/><b/></a>"}) {
    KPT_MEMORY_BYTES bytes(file);
    KPT_LOAD_PROBLEM problem;
    EXPECT_TRUE(KPT_UNREGISTERED_DB::load(bytes, "memory", &problem).is_null());
    EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NOT_COMPLETE);
  }
}

TEST(Bytes, WithoutANameSaySo) {
  for (const std::string file : {"<a/>", "<a><!-- --></a>"}) {
    KPT_MEMORY_BYTES bytes(file);
    KPT_LOAD_PROBLEM problem;
    EXPECT_TRUE(KPT_UNREGISTERED_DB::load(bytes, "memory", &problem).is_null());
    EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NO_NAME);
  }
}

}  // namespace
