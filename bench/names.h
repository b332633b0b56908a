// Register names like those of netlists, about 35 characters long, and orders in
// which to visit them.
#ifndef KPT_BENCH_NAMES_H
#define KPT_BENCH_NAMES_H

#include <memory>
#include <string>
#include <vector>

namespace bench {

using NAMES = std::shared_ptr<const std::vector<std::string>>;
using ORDER = std::shared_ptr<const std::vector<unsigned>>;

/// The names of one netlist ('a', 'b', ...), which are made once for each size.
NAMES names(char netlist, unsigned count);
ORDER in_order(unsigned count);
/// The same random order at every call.
ORDER shuffled(unsigned count);

}  // namespace bench

#endif
