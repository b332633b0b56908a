// Reads a file line by line and writes each line: what a program that streams a dump does at least.
//
//   read_lines FILE OUTPUT
#include <fstream>
#include <string>

int main(int count, char** arguments) {
  if (count != 3) {
    return 2;
  }
  std::ifstream in(arguments[1]);
  std::ofstream out(arguments[2]);
  for (std::string line; std::getline(in, line);) {
    out << line << '\n';
  }
  out.close();
  return in.eof() && out ? 0 : 1;
}
