// Message services of the host.
//
// Ownership: a message object belongs to whoever created it; post() hands its text on and leaves
// the object to its owner, who deletes it. Texts and tags are copied in.
#ifndef H_MSG_SYS_H
#define H_MSG_SYS_H

#include <array>
#include <cstdarg>
#include <cstddef>

#include "h/mem_alloc_sys.h"

/// A destination of messages, known to the host alone. Null stands for the host's own choice.
class MSG_REPORT;

enum MSG_SEVERITY : unsigned int {
  MSG_SEVERITY_ERROR,
  MSG_SEVERITY_INFO,
  MSG_SEVERITY_WARNING,
  MSG_SEVERITY_DEBUG,
  MSG_SEVERITY_EXTRA_INFO,
  MSG_SEVERITY_CRITICAL_WARNING
};

/// Indexed by MSG_SEVERITY.
inline constexpr std::array<const char*, 6> MSG_SEVERITY_NAMES{"Error", "Info",       "Warning",
                                                               "Debug", "Extra Info", "Critical Warning"};

/// A message: a text, filled once, and the tag it is filed under. Filling and posting never fail
/// visibly; a host that cannot deliver a message drops it.
class KPT_HOST_API MSG_BASE {
 public:
  /// Posts to `report`, which must outlive the message.
  explicit MSG_BASE(MSG_REPORT* report);
  virtual ~MSG_BASE();
  MSG_BASE(const MSG_BASE&) = delete;
  MSG_BASE& operator=(const MSG_BASE&) = delete;

  /// Zero-filled memory; throws std::bad_alloc when it runs out.
  static void* operator new(std::size_t size);
  static void operator delete(void* p);

  /// `text` has positional placeholders, "%1!s!" for argument 1 as const char* and "%2!d!" for
  /// argument 2 as int, in any order and repeated at will, and an identifier after its last "/".
  /// The identifier leaves the text and becomes the tag, unless a tag was set. The arguments are
  /// read here. What `n` means is the host's; it need not be the number of arguments.
  void fill_args(const char* text, unsigned int n, ...);

  /// `format` is printf's; the text is taken as it comes and names no identifier.
  __attribute__((format(printf, 2, 0))) void fill_args(const char* format, va_list args);

  /// Files the message under `tag`.
  virtual void set_tag(const char* tag);

  /// Hands tag and text on, as the severity of the class asks.
  virtual void post();

 protected:
  MSG_REPORT* m_report;
  MEM_STRING m_text;
  MEM_STRING m_tag;
};

/// An error, shown to the user.
class KPT_HOST_API MSG_E : public MSG_BASE {
 public:
  explicit MSG_E(MSG_REPORT* report);
};

/// A debug line, shown when the host's debug output is on.
class KPT_HOST_API MSG_D : public MSG_BASE {
 public:
  explicit MSG_D(MSG_REPORT* report);
};

/// A failed check of a library's own consistency.
class KPT_HOST_API MSG_INTERNAL_ERROR {
 public:
  /// Called once per failed check; the library goes on afterwards, so this returns. `condition`
  /// says what failed, `tag` names the module, `file` and `line` the check.
  static void report(const char* condition, const char* tag, const char* file, int line);
};

/// One debug line for a module, printf-style and without a line end. Called whether or not debug
/// output is on: the host decides, and says whether the line was handed on. `tag` is not changed.
KPT_HOST_API __attribute__((format(printf, 2, 0))) bool msg_local_vdebug(char* tag, const char* format, va_list args);

#endif
