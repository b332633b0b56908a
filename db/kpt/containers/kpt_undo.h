// Undoes a change unless the change is kept: for operations that may run out of
// memory when they are half done.
//
// Ownership: owns the function; everything that the function refers to has to outlive the object.
#ifndef KPT_UNDO_H
#define KPT_UNDO_H

#include <utility>

template <class F>
class KPT_UNDO {
 public:
  /// `undo` must not throw.
  explicit KPT_UNDO(F undo) : m_undo(std::move(undo)) {}
  ~KPT_UNDO() {
    if (!m_is_kept) {
      m_undo();
    }
  }
  KPT_UNDO(const KPT_UNDO&) = delete;
  KPT_UNDO& operator=(const KPT_UNDO&) = delete;

  void keep() { m_is_kept = true; }

 private:
  F m_undo;
  bool m_is_kept = false;
};

#endif
