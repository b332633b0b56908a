// All that a client of the keypoint database needs: the manager, and the
// handles to databases, registers, maps and state tables. It includes no
// header of the XML parser.
//
// Ownership: the manager owns the databases that it knows, and a KPT_UNREGISTERED_DB
// its own. Handles own nothing, but a KPT_STATE_TABLE owns a copy of a table.
//
// Threads: the manager may be called in any thread, and different databases may
// be used in different threads at once. Only one thread at a time may use a database
// with its handles, registers and maps, or the databases of a union or a composition.
// Register ids come from counters of the process. So databases that are recorded
// at the same time share one sequence of ids.
//
// When memory runs out, loading and saving return null or false and post the
// message EKPT_OUT_OF_MEMORY. Every other operation throws std::bad_alloc, and
// no other exception. It has then changed nothing and can be repeated, unless
// its comment says otherwise.
//
// Saving: `save_atomically` keeps the earlier file until the new one is complete.
// It saves every name that a file can hold (`kpt_file_can_hold`), refuses others,
// and returns true only when the file is on the disk. `save` writes in place,
// escapes nothing, and returns true on a full disk.
#ifndef KPT_H
#define KPT_H

#include "db/kpt/kpt_bytes.h"
#include "db/kpt/kpt_elim_words.h"
#include "db/kpt/kpt_file_visitor.h"
#include "db/kpt/kpt_held_text.h"
#include "db/kpt/kpt_keypoint_set.h"
#include "db/kpt/kpt_keypoints_db.h"
#include "db/kpt/kpt_keypoints_manager.h"
#include "db/kpt/kpt_load_problem.h"
#include "db/kpt/kpt_progress.h"
#include "db/kpt/kpt_register_group.h"
#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_register_transformation.h"
#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_transformation_set.h"
#include "db/kpt/kpt_types.h"
#include "db/kpt/kpt_unregistered_db.h"
#include "db/kpt/msg_kpt.h"

#endif
