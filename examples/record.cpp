// Records what a synthesis run did to the registers of a small UART transmitter,
// and then asks what became of each register of the design as written.
//
// A pass reports each event when it happens, by the names of the registers. The
// operation returns false when an event does not fit what is known. A debug line,
// which this program shows, then gives the reason.
#include <initializer_list>
#include <iostream>
#include <string>
#include <string_view>

#include "db/kpt/kpt.h"
#include "host/kpt_host.h"

namespace {

void report(std::string_view pass, bool recorded) { std::cout << pass << (recorded ? "" : ": refused") << "\n"; }

// A state machine of three states. The design as written encodes it in two bits,
// the synthesised design in one register for each state. Rows are the states,
// columns the registers in the order of the names.
bool record_state_machine(const KPT_KEYPOINTS_DB& db) {
  KPT_STATE_TABLE table(3, 2, 3);
  for (unsigned short state = 1; state <= 3; ++state) {
    const unsigned code = state - 1U;
    table.set_reference_entry(state, 1, (code & 2U) != 0);
    table.set_reference_entry(state, 2, (code & 1U) != 0);
    table.set_transformed_entry(state, state, true);
  }
  return db.associate_registers_fsm_signals({"state[1]", "state[0]"}, {"in_idle", "in_send", "in_stop"}, table);
}

void record_synthesis(const KPT_KEYPOINTS_DB& db) {
  // Elaboration: most registers are kept one to one.
  bool kept = true;
  for (const char* name : {"tx", "parity", "busy", "ready", "baud_tick", "scan_en", "version[0]", "debug"}) {
    kept = db.associate_registers_signal_to_signal(name, std::string(name) + "_reg") && kept;
  }
  report("keep signals", kept);

  // A block instance also has an entity and a register type.
  bool mapped = db.associate_registers_signal_to_instance("overrun", "u_overrun", "SDFFX1", "rise");
  mapped = db.associate_registers_instance_to_signal("u_sync", "SYNC2", "rise", "sync_reg") && mapped;
  mapped =
      db.associate_registers_instance_to_instance("u_fifo", "FIFO8", "rise", "u_fifo_sp", "FIFO8SP", "rise") && mapped;
  report("map instances", mapped);

  report("re-encode the state machine", record_state_machine(db));

  // Optimisation: replicas for fanout, equivalent registers merged, an inverter
  // moved across a register, registers without effect removed.
  report("replicate", db.set_replicated_registers("baud_tick_reg", "baud_tick_reg_dup"));
  report("retime", db.set_inverter_retimed_register("ready_reg"));
  report("merge", db.set_merged_registers("busy_reg", "ready_reg"));
  report("stuck at zero", db.set_eliminated_register_stuck_at_zero("scan_en_reg"));
  report("stuck at one", db.set_eliminated_register_stuck_at_one("version[0]_reg"));
  report("no fanout", db.set_eliminated_register_no_fanout("debug_reg"));

  // Events that do not fit are refused, and so is an elimination without a reason.
  report("replicate again", db.set_replicated_registers("baud_tick_reg", "baud_tick_reg_dup"));
  report("keep again", db.associate_registers_signal_to_signal("tx", "tx_other"));
  report("eliminate for no reason", db.set_eliminated_register("parity_reg"));
}

std::string list(std::string_view what, const KPT_REGISTER_KEYPOINT_LIST& registers) {
  std::string text;
  for (const KPT_REGISTER_KEYPOINT& each : registers) {
    text += std::string(text.empty() ? what : ",") + " " + each.get_name().c_str();
  }
  return text;
}

void tell_table(const KPT_REGISTER_TRANSFORMATION& map) {
  const KPT_STATE_TABLE table = map.get_state_table();
  for (unsigned short state = 1; state <= table.get_number_of_states(); ++state) {
    std::cout << "    ";
    for (unsigned short bit = 1; bit <= table.get_state_reference_size(); ++bit) {
      std::cout << table.get_reference_entry(state, bit);
    }
    std::cout << " -> ";
    for (unsigned short bit = 1; bit <= table.get_state_transformed_size(); ++bit) {
      std::cout << table.get_transformed_entry(state, bit);
    }
    std::cout << "\n";
  }
}

void tell(const KPT_REGISTER_TRANSFORMATION& map) {
  if (map.has_fsm()) {
    std::cout << "a state machine, encoded in";
    for (unsigned short bit = 0; bit < map.get_state_transformed_size(); ++bit) {
      std::cout << " " << map.get_transformed(bit).get_name();
    }
    std::cout << "\n";
    tell_table(map);
    return;
  }
  if (map.is_stuck_at_zero() || map.is_stuck_at_one()) {
    std::cout << "constant " << (map.is_stuck_at_one() ? 1 : 0) << "\n";
    return;
  }
  if (map.has_no_fanout()) {
    std::cout << "removed, it drove nothing\n";
    return;
  }
  const KPT_REGISTER_KEYPOINT now = map.get_transformed(0);
  std::cout << now.get_name();
  if (now.is_block_instance()) {
    std::cout << " of " << now.get_entity_name();
  }
  std::cout << list("; same value:", map.get_transformed_equivalents(0))
            << list("; inverse value:", map.get_transformed_inverted_equivalents(0))
            << list("; stands for also:", map.get_reference_equivalents(0))
            << list("; stands for the inverse of:", map.get_reference_inverted_equivalents(0)) << "\n";
}

}  // namespace

int main() {
  kpt_host::set_debug(true);
  kpt_host::set_debug_sink(
      [](const char* tag, const char* text) { std::cout << "  [" << tag << "] " << text << "\n"; });

  KPT_KEYPOINTS_MANAGER* manager = KPT_KEYPOINTS_MANAGER::get_instance();
  const KPT_KEYPOINTS_DB* db = manager->create_keypoints_db("uart_tx");
  record_synthesis(*db);
  kpt_host::set_debug(false);

  // A name finds only signal registers.
  std::cout << "\nWhat became of each register of " << db->get_name() << ":\n";
  for (const char* name : {"tx", "parity", "busy", "ready", "baud_tick", "scan_en", "version[0]", "debug", "overrun",
                           "state[1]", "state[0]", "no_such"}) {
    std::cout << "  " << name << ": ";
    const KPT_REGISTER_TRANSFORMATION map = db->get_reference_register_transformation(name);
    if (map.is_null()) {
      std::cout << "unknown\n";
    } else {
      tell(map);
    }
  }

  // A walk over all maps finds block instances.
  std::cout << "\nBlock instances:\n";
  for (const KPT_REGISTER_TRANSFORMATION& map : db->get_transformation_set().get_list_of_register_transformations()) {
    const KPT_REGISTER_KEYPOINT was = map.get_reference(0);
    if (was.is_block_instance()) {
      std::cout << "  " << was.get_name() << " of " << was.get_entity_name() << ": ";
      tell(map);
    }
  }

  std::cout << "\nRegisters that are left:";
  for (const KPT_REGISTER_KEYPOINT& each : db->get_transformed_set().get_list_of_registers()) {
    std::cout << " " << each.get_name();
  }
  std::cout << "\n";
  return manager->destroy_keypoints_db("uart_tx") ? 0 : 1;
}
