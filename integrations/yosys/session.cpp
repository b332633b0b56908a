#include "session.h"

#include <sys/resource.h>

#include <exception>
#include <map>
#include <memory>

#include "shelf.h"

// Yosys defines these, and declares them in no header.
namespace Yosys {
extern Pass* first_queued_pass;
}

namespace kpt_yosys {

namespace {

struct SESSION {
  std::unique_ptr<TRACKER> m_tracker;
  SHELF m_shelf;
  std::unique_ptr<AUDIT> m_audit;
  bool m_keeps_reference = false;
  bool m_away = false;  // the followed design is on the shelf only
  std::string m_stage;
  std::string m_running;  // the pass that is being executed; empty outside of passes
  double m_seconds = 0;
  double m_begin = 0;
  bool m_wrapped = false;
};

// Never destroyed, because a pass may run while Yosys shuts down.
SESSION& session() {
  static auto* const instance = new SESSION;
  return *instance;
}

double cpu_seconds(int whose) {
  constexpr double MICROSECOND = 1e-6;
  rusage usage{};
  getrusage(whose, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         MICROSECOND * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

// The processor time of this process and of those that passes start.
double all_cpu_seconds() { return cpu_seconds(RUSAGE_SELF) + cpu_seconds(RUSAGE_CHILDREN); }

// Runs an action of the tracking. When it fails, tracking ends and the synthesis continues.
template <class ACTION>
void track(RTLIL::Design* design, ACTION action) {
  SESSION& now = session();
  if (now.m_tracker == nullptr || design != Yosys::yosys_get_design()) {
    return;
  }
  const double begin = all_cpu_seconds();
  try {
    action(now);
  } catch (const std::exception& failure) {
    Yosys::log_warning("tracking of registers ends: %s\n", failure.what());
    stop_tracking();
  }
  now.m_seconds += all_cpu_seconds() - begin;
}

void keep_reference(SESSION& now) {
  if (now.m_keeps_reference && now.m_audit == nullptr && now.m_tracker->started()) {
    now.m_audit = std::make_unique<AUDIT>(now.m_tracker->view());
  }
}

// Tells the tracker what `pass` did.
void tell(RTLIL::Design* design, const std::string& pass) {
  track(design, [&](SESSION& now) {
    if (!now.m_away) {
      now.m_tracker->boundary(design, pass);
      keep_reference(now);
    }
  });
}

void tell_next(RTLIL::Design* design, const std::string& pass, const std::vector<std::string>& args) {
  track(design, [&](const SESSION& now) {
    if (!now.m_away) {
      now.m_tracker->prepare(pass, args);
    }
  });
}

// Designs are saved and come back, with what is known of them.
void tell_before_design(RTLIL::Design* design, const std::vector<std::string>& args) {
  track(design, [&](SESSION& now) { now.m_shelf.before(design, args, now.m_away ? nullptr : now.m_tracker.get()); });
}

void tell_after_design(RTLIL::Design* design, const std::vector<std::string>& args) {
  track(design, [&](SESSION& now) {
    switch (now.m_shelf.after(args)) {
      case SHELF::OUTCOME::STAYS:
        tell(design, "");
        break;
      case SHELF::OUTCOME::AWAY:
        now.m_away = true;
        break;
      case SHELF::OUTCOME::COMES_BACK:
        now.m_away = false;
        now.m_tracker->take_up(design, now.m_shelf.take());
        break;
    }
  });
}

// The pass that is running, also when a pass calls others. A pass that ends with
// an exception may have done anything, so the next boundary names no pass.
class RUNNING {
 public:
  RUNNING(RTLIL::Design* design, const std::string& pass, const std::vector<std::string>& args)
      : m_outer(session().m_running) {
    tell(design, m_outer);
    tell_next(design, pass, args);
    session().m_running = pass;
  }
  ~RUNNING() { session().m_running = m_done ? m_outer : std::string(); }
  RUNNING(const RUNNING&) = delete;
  RUNNING& operator=(const RUNNING&) = delete;
  void done(RTLIL::Design* design) {
    m_done = true;
    tell_next(design, m_outer, {});
  }

 private:
  std::string m_outer;
  bool m_done = false;
};

struct WATCHED_PASS : Yosys::Pass {
  explicit WATCHED_PASS(Yosys::Pass* pass) : Pass(pass->pass_name, pass->short_help), m_pass(pass) {
    call_counter = pass->call_counter;
    runtime_ns = pass->runtime_ns;
    experimental_flag = pass->experimental_flag;
  }
  void help() override { m_pass->help(); }
  void clear_flags() override { m_pass->clear_flags(); }
  void on_shutdown() override { m_pass->on_shutdown(); }
  void execute(std::vector<std::string> args, RTLIL::Design* design) override {
    RUNNING running(design, pass_name, args);
    if (pass_name == "design") {
      tell_before_design(design, args);
      m_pass->execute(args, design);
      tell_after_design(design, args);
    } else {
      m_pass->execute(std::move(args), design);
      tell(design, pass_name);
    }
    experimental_flag = m_pass->experimental_flag;
    running.done(design);
  }

  Yosys::Pass* m_pass;
};

bool is_watched(const Yosys::Pass* pass) {
  return dynamic_cast<const Yosys::Frontend*>(pass) == nullptr &&
         dynamic_cast<const Yosys::Backend*>(pass) == nullptr && !pass->pass_name.starts_with("kpt_");
}

// Creating a pass puts it into the list of passes to register under its name,
// which exists already. So the list is restored.
void watch_passes() {
  Yosys::Pass* const line = Yosys::first_queued_pass;
  for (auto& [name, pass] : Yosys::pass_register) {
    if (is_watched(pass)) {
      pass = new WATCHED_PASS(pass);
    }
  }
  Yosys::first_queued_pass = line;
}

}  // namespace

void start_tracking(RTLIL::Design* design, const std::string& top, const std::string& name, bool audit) {
  SESSION& now = session();
  stop_tracking();
  if (!now.m_wrapped) {
    watch_passes();
    now.m_wrapped = true;
  }
  now.m_seconds = 0;
  now.m_begin = all_cpu_seconds();
  now.m_stage = name;
  now.m_tracker = std::make_unique<TRACKER>(design, top);
  now.m_keeps_reference = audit;
  keep_reference(now);
}

void stop_tracking() {
  session().m_tracker.reset();
  session().m_audit.reset();
  session().m_shelf.clear();
  session().m_away = false;
}

const AUDIT* current_audit() { return session().m_audit.get(); }

bool is_away() { return session().m_away; }

TRACKER* current_tracker() { return session().m_tracker.get(); }

const std::string& current_stage() { return session().m_stage; }

void next_stage(const std::string& name) {
  session().m_tracker->restart();
  session().m_audit.reset();
  keep_reference(session());
  session().m_shelf.clear();  // the saved designs belong to an earlier stage
  session().m_stage = name;
}

COST tracking_cost() { return {session().m_seconds, all_cpu_seconds() - session().m_begin}; }

}  // namespace kpt_yosys
