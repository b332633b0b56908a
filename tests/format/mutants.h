// Files that are almost database files.
//
// Ownership: owns its random numbers.
#ifndef TESTS_FORMAT_MUTANTS_H
#define TESTS_FORMAT_MUTANTS_H

#include <random>
#include <string>
#include <vector>

namespace kpt_test {

class MUTANTS {
 public:
  MUTANTS(unsigned seed, std::vector<std::string> files) : m_random(seed), m_files(std::move(files)) {}

  /// A file, changed in one to a few places: bytes, words, numbers, attributes,
  /// blanks, whole elements, or cut off.
  std::string next();

 private:
  std::size_t below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random); }
  std::string word();
  std::string number();
  std::size_t place(const std::string& text, char mark);
  void mutate(std::string& text);
  void replace_number(std::string& text);
  void change_attribute(std::string& text);
  void move_element(std::string& text);

  std::mt19937 m_random;
  std::vector<std::string> m_files;
};

}  // namespace kpt_test

#endif
