#include "errors.h"

#include "text.h"

namespace kpt_python {

void raise_refused(const std::string& reason) { raise("Refused", to_python(reason)); }

void raise_gone(const std::string& what) { raise("Gone", to_python(what)); }

}  // namespace kpt_python
