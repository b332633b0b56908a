#include "database.h"

#include <stdexcept>

#include "errors.h"
#include "library_use.h"

namespace kpt_python {

DATABASE::~DATABASE() { wait_for_library(); }

const KPT_KEYPOINTS_DB& DATABASE::use() const {
  wait_for_library();
  if (m_db.is_null()) {
    raise_gone("the database was published: it is the process's");
  }
  return m_db.get();
}

void OWNER::init(std::string_view name) {
  if (m_shared == nullptr) {
    wait_for_library();
    m_shared = std::make_shared<DATABASE>(name);
  }
}

const SHARED_DATABASE& OWNER::checked() const {
  if (m_shared == nullptr) {
    throw std::runtime_error("kpt.Database.__init__ was not called");
  }
  return m_shared;
}

void DATABASE::publish() {
  const std::string name(std::string_view(use().get_name()));
  KPT_KEYPOINTS_MANAGER* const manager = KPT_KEYPOINTS_MANAGER::get_instance();
  if (manager->get_keypoints_db(name) != nullptr) {
    raise_refused("a database named " + name + " is published already");
  }
  manager->record_db(std::move(m_db));
}

}  // namespace kpt_python
