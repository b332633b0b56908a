#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "h/fio_path.h"

namespace {

std::string full(const char* path) { return std::string(FIO_PATH(path).fullpath()); }

TEST(Path, NetworkPathsBeginWithTwoSeparators) {
  EXPECT_TRUE(FIO_PATH::is_unc_path("//server/share/file"));
  EXPECT_TRUE(FIO_PATH::is_unc_path("\\\\server\\share\\file"));
  for (const char* const path : {"", "/", "\\", "/a//b", "a", "./a", "C:\\a", "/\\a", "\\/a"}) {
    EXPECT_FALSE(FIO_PATH::is_unc_path(path)) << path;
  }
  EXPECT_FALSE(FIO_PATH::is_unc_path(nullptr));
}

TEST(Path, NetworkPathsNameAServerBehindTheirSeparators) {
  EXPECT_TRUE(FIO_PATH::is_unc_path("//s"));
  EXPECT_TRUE(FIO_PATH::is_unc_path("\\\\s"));
  for (const char* const path : {"//", "///", "///x", "\\\\", "\\\\\\x", "//\\x", "\\\\/x"}) {
    EXPECT_FALSE(FIO_PATH::is_unc_path(path)) << path;
  }
}

TEST(Path, FullpathBeginsAtTheRoot) {
  EXPECT_EQ(full("/a/b.xml"), "/a/b.xml");
  EXPECT_EQ(full("b.xml"), (std::filesystem::current_path() / "b.xml").string());
}

TEST(Path, EmptyPathStaysEmpty) {
  EXPECT_EQ(full(""), "");
  EXPECT_EQ(full(nullptr), "");
}

TEST(Path, NetworkPathOpensHereAfterItsSeparatorsChanged) {
  FIO_PATH path("//server/share/file");
  path.change_path_separators_for_windows_api();
  EXPECT_EQ(path.fullpath(), "//server/share/file");
  EXPECT_EQ(full("\\\\server\\share\\file"), "//server/share/file");
}

TEST(Path, OtherPathsKeepTheirSeparators) {
  FIO_PATH path("/a/b\\c");
  path.change_path_separators_for_windows_api();
  EXPECT_EQ(path.fullpath(), "/a/b\\c");
}

}  // namespace
