// The parts of the module.
//
// Ownership: none.
#ifndef KPT_PYTHON_BINDINGS_H
#define KPT_PYTHON_BINDINGS_H

#include <pybind11/pybind11.h>

#include "database.h"

namespace kpt_python {

using DATABASE_CLASS = pybind11::class_<OWNER>;

void bind_registers(pybind11::module_& module);
void bind_maps(pybind11::module_& module);
void bind_look_ups(DATABASE_CLASS& database);
void bind_map_look_ups(DATABASE_CLASS& database);
void bind_events(DATABASE_CLASS& database);
void bind_bulk(DATABASE_CLASS& database);
void bind_files(pybind11::module_& module, DATABASE_CLASS& database);

}  // namespace kpt_python

#endif
