// The library's own containers, compared with containers of other libraries, on
// the work that a database gives them.
#include <benchmark/benchmark.h>

#include <boost/container/small_vector.hpp>
#include <boost/dynamic_bitset.hpp>
#include <boost/unordered/unordered_flat_set.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <memory_resource>
#include <vector>

#include "bench/names.h"
#include "bench/workload.h"
#include "db/kpt/containers/kpt_bit_table.h"
#include "db/kpt/containers/kpt_pool.h"
#include "db/kpt/containers/kpt_small_vector.h"
#include "db/kpt/kpt_keypoint_index.h"
#include "db/kpt/kpt_register_keypoint_impl.h"

namespace bench {

namespace {

// ---- The registers of a set by their names: all entered, and each looked up ----

using REGISTER = KPT_REGISTER_KEYPOINT_IMPL;
using REGISTERS = KPT_POOL<REGISTER>;

struct REGISTERS_OF_A_SET {
  explicit REGISTERS_OF_A_SET(unsigned count) : names(bench::names('a', count)) {
    for (unsigned k = 0; k < count; ++k) {
      pool.construct(static_cast<long>(k), (*names)[k]);
    }
  }
  ~REGISTERS_OF_A_SET() {
    for (std::uint32_t k = pool.count(); k-- > 0;) {
      pool.destroy(pool.at(k));
    }
  }
  REGISTERS_OF_A_SET(const REGISTERS_OF_A_SET&) = delete;
  REGISTERS_OF_A_SET& operator=(const REGISTERS_OF_A_SET&) = delete;

  NAMES names;
  REGISTERS pool;
};

RUN index_kpt(unsigned count) {
  return [registers = std::make_shared<REGISTERS_OF_A_SET>(count), order = shuffled(count),
          kept = std::make_shared<std::unique_ptr<KPT_KEYPOINT_INDEX>>()] {
    auto index = std::make_unique<KPT_KEYPOINT_INDEX>(registers->pool);
    for (const unsigned k : *order) {
      index->enter(k, KPT_REGISTER_TEXTS((*registers->names)[k]).hash);
    }
    for (const std::string& name : *registers->names) {
      benchmark::DoNotOptimize(index->find(KPT_REGISTER_TEXTS(name)));
    }
    *kept = std::move(index);
  };
}

// With the same hash of the same texts.
struct HASH_OF_NAME {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const { return KPT_REGISTER_TEXTS(name).hash; }
  std::size_t operator()(const REGISTER* keypoint) const { return (*this)(keypoint->get_element_name()); }
};
struct SAME_NAME {
  using is_transparent = void;
  static std::string_view of(const REGISTER* keypoint) { return keypoint->get_element_name(); }
  static std::string_view of(std::string_view name) { return name; }
  bool operator()(const auto& a, const auto& b) const { return of(a) == of(b); }
};

RUN index_flat_set(unsigned count) {
  using INDEX = boost::unordered_flat_set<const REGISTER*, HASH_OF_NAME, SAME_NAME>;
  return [registers = std::make_shared<REGISTERS_OF_A_SET>(count), order = shuffled(count),
          kept = std::make_shared<std::unique_ptr<INDEX>>()] {
    auto index = std::make_unique<INDEX>();
    for (const unsigned k : *order) {
      index->insert(registers->pool.at(k));
    }
    for (const std::string& name : *registers->names) {
      benchmark::DoNotOptimize(index->find(std::string_view(name)));
    }
    *kept = std::move(index);
  };
}

// ---- Objects of the size of a map: made, walked, a third of them replaced ----

struct OBJECT {
  explicit OBJECT(std::uint64_t value) : words{value} {}
  std::uint64_t words[13];
};

RUN pool_kpt(unsigned count) {
  return [count, kept = std::make_shared<std::unique_ptr<KPT_POOL<OBJECT>>>()] {
    auto pool = std::make_unique<KPT_POOL<OBJECT>>();
    std::vector<OBJECT*> objects;
    objects.reserve(count);
    for (unsigned k = 0; k < count; ++k) {
      objects.push_back(pool->construct(k));
    }
    for (unsigned k = 0; k < count; k += 3) {
      pool->destroy(objects[k]);
      objects[k] = pool->construct(k);
    }
    std::uint64_t sum = 0;
    for (const OBJECT* object : objects) {
      sum += object->words[0];
    }
    benchmark::DoNotOptimize(sum);
    *kept = std::move(pool);
  };
}

RUN pool_new(unsigned count) {
  return [count, kept = std::make_shared<std::vector<std::unique_ptr<OBJECT>>>()] {
    std::vector<std::unique_ptr<OBJECT>> objects;
    objects.reserve(count);
    for (unsigned k = 0; k < count; ++k) {
      objects.push_back(std::make_unique<OBJECT>(k));
    }
    for (unsigned k = 0; k < count; k += 3) {
      objects[k] = std::make_unique<OBJECT>(k);
    }
    std::uint64_t sum = 0;
    for (const auto& object : objects) {
      sum += object->words[0];
    }
    benchmark::DoNotOptimize(sum);
    *kept = std::move(objects);
  };
}

RUN pool_resource(unsigned count) {
  return [count, kept = std::make_shared<std::unique_ptr<std::pmr::unsynchronized_pool_resource>>()] {
    auto resource = std::make_unique<std::pmr::unsynchronized_pool_resource>();
    std::pmr::polymorphic_allocator<OBJECT> allocator(resource.get());
    std::vector<OBJECT*> objects;
    objects.reserve(count);
    for (unsigned k = 0; k < count; ++k) {
      objects.push_back(allocator.new_object<OBJECT>(k));
    }
    for (unsigned k = 0; k < count; k += 3) {
      allocator.delete_object(objects[k]);
      objects[k] = allocator.new_object<OBJECT>(k);
    }
    std::uint64_t sum = 0;
    for (const OBJECT* object : objects) {
      sum += object->words[0];
    }
    benchmark::DoNotOptimize(sum);
    *kept = std::move(resource);
  };
}

// ---- Groups of a map: nearly all of one keypoint, one in sixteen of three ----

template <class GROUP>
RUN groups(unsigned count) {
  return [count, kept = std::make_shared<std::vector<GROUP>>()] {
    static int s_keypoint;
    std::vector<GROUP> all(count);
    for (unsigned k = 0; k < count; ++k) {
      for (unsigned n = 0; n < (k % 16 == 0 ? 3U : 1U); ++n) {
        all[k].push_back(&s_keypoint);
      }
    }
    std::size_t sum = 0;
    for (const GROUP& group : all) {
      for (const int* keypoint : group) {
        sum += keypoint == &s_keypoint ? 1U : 0U;
      }
    }
    benchmark::DoNotOptimize(sum);
    *kept = std::move(all);
  };
}

// ---- Tables of four states by four registers, as most machines have: filled and read ----

template <class BITS, class MAKE, class SET, class GET>
RUN tables(unsigned count, MAKE make, SET set, GET get) {
  return [count, make, set, get, kept = std::make_shared<std::vector<BITS>>()] {
    std::vector<BITS> all;
    all.reserve(count);
    for (unsigned k = 0; k < count; ++k) {
      all.push_back(make());
      for (unsigned at = 0; at < 16; at += 5) {
        set(all.back(), at);
      }
    }
    unsigned sum = 0;
    for (const BITS& bits : all) {
      for (unsigned at = 0; at < 16; ++at) {
        sum += get(bits, at) ? 1U : 0U;
      }
    }
    benchmark::DoNotOptimize(sum);
    *kept = std::move(all);
  };
}

RUN bits_kpt(unsigned count) {
  return tables<KPT_BIT_TABLE>(
      count, [] { return KPT_BIT_TABLE(); }, [](KPT_BIT_TABLE& bits, unsigned at) { bits.set(at, true); },
      [](const KPT_BIT_TABLE& bits, unsigned at) { return bits.get(at); });
}

template <class BITS>
RUN bits_of_a_library(unsigned count) {
  return tables<BITS>(
      count, [] { return BITS(16); }, [](BITS& bits, unsigned at) { bits[at] = true; },
      [](const BITS& bits, unsigned at) { return static_cast<bool>(bits[at]); });
}

}  // namespace

std::vector<WORKLOAD> container_workloads() {
  return {{"own_index/kpt", index_kpt},
          {"own_index/flat_set", index_flat_set},
          {"own_pool/kpt", pool_kpt},
          {"own_pool/new", pool_new},
          {"own_pool/pool_resource", pool_resource},
          {"own_group/kpt", groups<KPT_SMALL_VECTOR<int*>>},
          {"own_group/boost_small_vector", groups<boost::container::small_vector<int*, 1>>},
          {"own_group/vector", groups<std::vector<int*>>},
          {"own_bits/kpt", bits_kpt},
          {"own_bits/dynamic_bitset", bits_of_a_library<boost::dynamic_bitset<>>},
          {"own_bits/vector_bool", bits_of_a_library<std::vector<bool>>}};
}

}  // namespace bench
