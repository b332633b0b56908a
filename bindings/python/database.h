// A database that Python owns.
//
// Ownership: shared by the Database object and by all handles that were got from
// it, so that none of them outlives it. The library's own registry knows nothing
// of it until it is published; from then on it is the registry's, and everything
// here raises Gone.
#ifndef KPT_PYTHON_DATABASE_H
#define KPT_PYTHON_DATABASE_H

#include <memory>
#include <string_view>

#include "db/kpt/kpt.h"

namespace kpt_python {

class DATABASE {
 public:
  explicit DATABASE(std::string_view name) : m_db(KPT_UNREGISTERED_DB::create(name)) {}
  explicit DATABASE(KPT_UNREGISTERED_DB db) : m_db(std::move(db)) {}
  ~DATABASE();
  DATABASE(const DATABASE&) = delete;
  DATABASE& operator=(const DATABASE&) = delete;

  /// For a call into the library: no other thread is inside, and the database is there.
  const KPT_KEYPOINTS_DB& use() const;
  /// Whether the registry of the process has it now.
  bool is_published() const { return m_db.is_null(); }
  /// Hands it over to the registry of the process.
  void publish();

 private:
  KPT_UNREGISTERED_DB m_db;
};

using SHARED_DATABASE = std::shared_ptr<DATABASE>;

/// The Database object. It has none as long as a class derived from it has not called __init__.
class OWNER {
 public:
  OWNER() = default;
  explicit OWNER(SHARED_DATABASE shared) : m_shared(std::move(shared)) {}

  DATABASE* operator->() const { return checked().get(); }
  operator const SHARED_DATABASE&() const { return checked(); }
  /// The first call counts.
  void init(std::string_view name);

 private:
  const SHARED_DATABASE& checked() const;

  SHARED_DATABASE m_shared;
};

}  // namespace kpt_python

#endif
