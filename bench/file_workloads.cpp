// Saves and loads a file of N one-to-one registers. The file is in memory: in
// $KPT_BENCH_FOLDER, or in /dev/shm when that is not set.
#include <benchmark/benchmark.h>
#include <expat.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <sstream>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "bench/database.h"
#include "bench/workload.h"

namespace bench {

namespace {

// A file that is removed after the last workload that uses it.
class FILE_NAME {
 public:
  explicit FILE_NAME(const char* leaf) {
    const char* folder = std::getenv("KPT_BENCH_FOLDER");
    m_name = std::string(folder == nullptr ? "/dev/shm" : folder) + "/kpt_bench_" + std::to_string(getpid()) + leaf;
  }
  ~FILE_NAME() { unlink(m_name.c_str()); }
  FILE_NAME(const FILE_NAME&) = delete;
  FILE_NAME& operator=(const FILE_NAME&) = delete;
  const std::string& operator*() const { return m_name; }

 private:
  std::string m_name;
};

using FILE_POINTER = std::shared_ptr<FILE_NAME>;

// Saves a database of that many registers, destroys the database and returns the file.
FILE_POINTER saved(unsigned count) {
  auto file = std::make_shared<FILE_NAME>("_load.xml");
  (*recorded("saved", count))->save(**file);
  return file;
}

std::string text_of(unsigned count) {
  std::ifstream in(**saved(count), std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

RUN save_kpt(unsigned count) {
  return [db = recorded("save", count), file = std::make_shared<FILE_NAME>("_save.xml")] { (*db)->save(**file); };
}

// The limit: the work that every way of saving has to do.
RUN save_copy(unsigned count) {
  auto text = std::make_shared<const std::string>(text_of(count));
  return [text, file = std::make_shared<FILE_NAME>("_copy.xml")] {
    constexpr std::size_t BLOCK = std::size_t{1} << 20U;
    std::vector<char> buffer(BLOCK);
    const int out = open((**file).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    for (std::size_t at = 0; at < text->size(); at += BLOCK) {
      const std::size_t size = std::min(BLOCK, text->size() - at);
      std::memcpy(buffer.data(), text->data() + at, size);
      benchmark::DoNotOptimize(write(out, buffer.data(), size));
    }
    close(out);
  };
}

RUN save_flushed(unsigned count) {
  auto lines = std::make_shared<std::vector<std::string>>();
  std::istringstream text(text_of(count));
  for (std::string line; std::getline(text, line);) {
    lines->push_back(line);
  }
  return [lines, file = std::make_shared<FILE_NAME>("_flushed.xml")] {
    std::ofstream out(**file);
    for (const std::string& line : *lines) {
      out << line << std::endl;
    }
  };
}

RUN load_kpt(unsigned count) {
  struct LOADED {
    ~LOADED() { DATABASE::manager().destroy_keypoints_db("saved"); }
  };
  return [file = saved(count), loaded = std::make_shared<LOADED>()] {
    benchmark::DoNotOptimize(DATABASE::manager().load_db(**file));
  };
}

// The same file with a comment in front, so that the general source reads it.
RUN load_kpt_by_xerces(unsigned count) {
  struct LOADED {
    ~LOADED() { DATABASE::manager().destroy_keypoints_db("saved"); }
  };
  auto file = std::make_shared<FILE_NAME>("_load_by_xerces.xml");
  std::ofstream(**file, std::ios::binary) << "<!-- -->" << text_of(count);
  return [file, loaded = std::make_shared<LOADED>()] { benchmark::DoNotOptimize(DATABASE::manager().load_db(**file)); };
}

struct XERCES {
  XERCES() { xercesc::XMLPlatformUtils::Initialize(); }
  ~XERCES() { xercesc::XMLPlatformUtils::Terminate(); }
};

// Two document trees, one for the name and one for the rest, as a plain implementation would build.
RUN load_two_doms(unsigned count) {
  return [file = saved(count)] {
    const XERCES xerces;
    for (int k = 0; k < 2; ++k) {
      xercesc::XercesDOMParser parser;
      parser.parse((**file).c_str());
      benchmark::DoNotOptimize(parser.getDocument());
    }
  };
}

RUN load_sax2(unsigned count) {
  return [file = saved(count)] {
    const XERCES xerces;
    const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
    xercesc::DefaultHandler handler;
    reader->setContentHandler(&handler);
    reader->parse((**file).c_str());
  };
}

RUN load_pugixml(unsigned count) {
  return [file = saved(count)] {
    pugi::xml_document document;
    benchmark::DoNotOptimize(document.load_file((**file).c_str()));
  };
}

RUN load_expat(unsigned count) {
  return [file = saved(count)] {
    XML_Parser parser = XML_ParserCreate(nullptr);
    long elements = 0;
    XML_SetUserData(parser, &elements);
    XML_SetElementHandler(
        parser, [](void* seen, const XML_Char*, const XML_Char**) { ++*static_cast<long*>(seen); },
        [](void*, const XML_Char*) {});
    std::ifstream in(**file, std::ios::binary);
    std::vector<char> buffer(std::size_t{1} << 16U);
    while (in) {
      in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
      XML_Parse(parser, buffer.data(), static_cast<int>(in.gcount()), in.eof() ? XML_TRUE : XML_FALSE);
    }
    benchmark::DoNotOptimize(elements);
    XML_ParserFree(parser);
  };
}

}  // namespace

std::vector<WORKLOAD> file_workloads() {
  return {{"save/kpt", save_kpt},
          {"save/copy_and_write", save_copy},
          {"save/stream_flushed_a_line", save_flushed},
          {"load/kpt", load_kpt, CLOCK::USER},
          {"load/kpt_by_xerces", load_kpt_by_xerces, CLOCK::USER},
          {"load/two_dom_parses", load_two_doms, CLOCK::USER},
          {"load/xerces_sax2", load_sax2, CLOCK::USER},
          {"load/pugixml", load_pugixml, CLOCK::USER},
          {"load/expat", load_expat, CLOCK::USER}};
}

}  // namespace bench
