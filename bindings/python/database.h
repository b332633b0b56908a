// A database that Python owns.
//
// Ownership: the Database object and all handles from it share the database, so
// none of them outlives it. It is not in the library's registry until it is
// published. From then on the registry owns it, and every operation here raises
// Gone.
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

  /// For a call into the library: waits until no other thread is inside, and checks that the database exists.
  const KPT_KEYPOINTS_DB& use() const;
  /// Whether the registry of the process owns it now.
  bool is_published() const { return m_db.is_null(); }
  /// Gives it to the registry of the process.
  void publish();

 private:
  KPT_UNREGISTERED_DB m_db;
};

using SHARED_DATABASE = std::shared_ptr<DATABASE>;

/// The Database object. It has no database until a derived class has called __init__.
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
