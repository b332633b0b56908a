// Message services of the host.
//
// Ownership: the code that creates a message object owns it and deletes it. post() passes the text
// on and does not delete the object. Texts and tags are copied.
#ifndef H_MSG_SYS_H
#define H_MSG_SYS_H

#include <array>
#include <cstdarg>
#include <cstddef>

#include "h/mem_alloc_sys.h"

/// A destination of messages. Only the host defines it. Null means that the host chooses.
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

/// A message: a text, which is filled once, and the tag under which the text is filed. Filling and
/// posting report no failure: a host that cannot deliver a message drops it.
class KPT_HOST_API MSG_BASE {
 public:
  /// The message is posted to `report`, which has to outlive it.
  explicit MSG_BASE(MSG_REPORT* report);
  virtual ~MSG_BASE();
  MSG_BASE(const MSG_BASE&) = delete;
  MSG_BASE& operator=(const MSG_BASE&) = delete;

  /// Zero-filled memory; throws std::bad_alloc when it runs out.
  static void* operator new(std::size_t size);
  static void operator delete(void* p);

  /// `text` has positional placeholders: "%1!s!" is argument 1, a const char*, and "%2!d!" is
  /// argument 2, an int. They come in any order, and may occur several times. An identifier follows
  /// the last "/". It is removed from the text and becomes the tag, unless a tag was set. The call
  /// reads the arguments. The host decides what `n` means; it need not be the number of arguments.
  void fill_args(const char* text, unsigned int n, ...);

  /// `format` is a printf format. The text has no identifier.
  __attribute__((format(printf, 2, 0))) void fill_args(const char* format, va_list args);

  /// Files the message under `tag`.
  virtual void set_tag(const char* tag);

  /// Passes tag and text on, with the severity of the class.
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
  /// Called once for each failed check. It has to return, because the library then continues.
  /// `condition` says what failed, `tag` names the module, `file` and `line` name the check.
  static void report(const char* condition, const char* tag, const char* file, int line);
};

/// One debug line for a module, with a printf format and without a line end. Also called when debug
/// output is off: the host decides, and returns whether it showed the line. `tag` is not changed.
KPT_HOST_API __attribute__((format(printf, 2, 0))) bool msg_local_vdebug(char* tag, const char* format, va_list args);

#endif
