// Gets the elements of a database file, with their lines, while a load reads
// them. It is for programs that report on the file itself, and on elements that
// the database does not show. Clients derive a class from it.
//
// Ownership: the caller owns the visitor, which has to outlive the load.
// Arguments are valid only during a call.
#ifndef KPT_FILE_VISITOR_H
#define KPT_FILE_VISITOR_H

#include <cstddef>
#include <string_view>

#include "db/kpt/kpt_element_attributes.h"
#include "kpt_export.h"

/// Every call of `start` has a call of `end`, also in a file that a load refuses. In
/// a file that is not well-formed, the visitor gets what precedes the error. It gets
/// no comments and no processing instructions. A line, counted from 1, is the line
/// on which the tag ends. A visitor must not throw.
class KPT_EXPORT KPT_FILE_VISITOR {
 public:
  virtual ~KPT_FILE_VISITOR() = default;
  virtual void start(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) = 0;
  virtual void end(std::size_t line) = 0;
  /// A piece of the text of the innermost element that has not ended, with
  /// references replaced.
  virtual void text(std::string_view piece) = 0;
  /// Called before and after what replaces a reference to an XML entity. A load
  /// reads texts and values of tables there, but no registers and no maps.
  virtual void start_reference() {}
  virtual void end_reference() {}
};

#endif
