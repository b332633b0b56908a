// The cost of one million associations through the handle: the time and memory of
// each, then look-ups, adding and deleting maps, and destroying everything.
//
//   record_figures [associations]
//
// Times are the best of three databases. Memory is what the process has from its
// allocator, without the texts of the caller.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"

namespace {

// The processor time of this process, so that other programs matter little.
double now() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

double nanoseconds_each(double since, std::size_t count) { return (now() - since) / static_cast<double>(count); }

// About 35 characters, like the names of a synthesis tool.
std::vector<std::string> register_names(std::size_t count, const char* last) {
  std::vector<std::string> names;
  names.reserve(count);
  for (std::size_t k = 0; k < count; ++k) {
    char text[64];
    std::snprintf(text, sizeof text, "u_core_%zu/u_lsu/u_q%zu/%s_q_reg[%zu]", k / 32 / 64 % 64, k / 32 % 64, last,
                  k / 32 / 64 / 64 * 32 + k % 32);
    names.emplace_back(text);
  }
  return names;
}

std::size_t in_use() { return mallinfo2().uordblks + mallinfo2().hblkhd; }

std::map<std::string, double> s_best;

void note(const char* what, double nanoseconds) {
  const auto [entry, is_new] = s_best.emplace(what, nanoseconds);
  entry->second = std::min(entry->second, nanoseconds);
}

void measure(const std::vector<std::string>& r_names, const std::vector<std::string>& t_names) {
  const std::size_t count = r_names.size();
  const std::size_t before = in_use();
  KPT_KEYPOINTS_MANAGER* manager = KPT_KEYPOINTS_MANAGER::get_instance();
  const KPT_KEYPOINTS_DB* db = manager->create_keypoints_db("figures");

  auto start = now();
  for (std::size_t k = 0; k < count; ++k) {
    db->associate_registers_signal_to_signal(r_names[k], t_names[k]);
  }
  note("1 associate", nanoseconds_each(start, count));
  s_best["0 bytes an association"] = static_cast<double>(in_use() - before) / static_cast<double>(count);

  // In random order, like the queries of a consumer.
  std::size_t found = 0;
  std::size_t at = 0;
  start = now();
  for (std::size_t k = 0; k < count; ++k) {
    at = (at + 618033) % count;
    found += db->get_reference_register_transformation(r_names[at]).is_null() ? 0U : 1U;
  }
  note("2 look up, scattered", nanoseconds_each(start, count));
  start = now();
  for (std::size_t k = 0; k < count; ++k) {
    found += db->get_transformed_register_transformation(t_names[k]).is_null() ? 0U : 1U;
  }
  note("3 look up, in order", nanoseconds_each(start, count));

  KPT_KEYPOINTS_DB_IMPL impl("beside");
  KPT_TRANSFORMATION_SET_IMPL& set = *impl.get_transformation_set();
  std::vector<KPT_KEYPOINT*> r;
  std::vector<KPT_KEYPOINT*> t;
  for (std::size_t k = 0; k < count; ++k) {
    r.push_back(impl.add_to_register_set(KPT_REFERENCE_SET, 0, r_names[k]));
    t.push_back(impl.add_to_register_set(KPT_TRANSFORMED_SET, 0, t_names[k]));
  }
  std::vector<KPT_TRANSFORMATION_IMPL*> maps(count);
  start = now();
  for (std::size_t k = 0; k < count; ++k) {
    maps[k] = set.add_map(r[k], t[k]);
  }
  note("4 add a map", nanoseconds_each(start, count));
  const std::size_t some = std::min<std::size_t>(count, 100000);
  start = now();
  for (std::size_t k = 0; k < some; ++k) {
    found += set.delete_map(maps[k * (count / some)]) ? 1U : 0U;
  }
  note("5 delete a map among them", nanoseconds_each(start, some));

  start = now();
  manager->destroy_keypoints_db("figures");
  note("6 destroy", nanoseconds_each(start, count));
  if (found != 2 * count + some) {
    std::puts("a register was not found");
    std::exit(1);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1000000;
  const std::vector<std::string> r_names = register_names(count, "data");
  const std::vector<std::string> t_names = register_names(count, "dffr");
  for (int run = 0; run < 3; ++run) {
    measure(r_names, t_names);
  }
  std::printf("%zu associations, names of %zu characters\n", count, r_names[count / 2].size());
  for (const auto& [what, value] : s_best) {
    std::printf("%-28s %8.0f %s\n", what.c_str() + 2, value, what[0] == '0' ? "bytes" : "ns");
  }
  return 0;
}
