// Opens what a command reads. Only here is standard input opened.
//
// Ownership: the caller owns the descriptor.
#ifndef KPTDB_OPEN_TO_READ_H
#define KPTDB_OPEN_TO_READ_H

#include <string>

namespace kptdb {

/// Opens a file, or standard input for "-", and returns its descriptor; negative when
/// that fails, with `errno`. FAILURE when standard input was opened before: it can be read only once.
int open_to_read(const std::string& path);

}  // namespace kptdb

#endif
