"""Random sequences of passes, from a netlist of words to one of gates or of technology cells."""

_COARSE = [
    "opt", "opt -nodffe -nosdff", "opt -full", "opt_clean", "opt_clean -purge", "wreduce", "wreduce -memx",
    "share -aggressive", "fsm", "fsm -encoding binary", "fsm -expand", "fsm -expand -encoding binary",
    "fsm_detect; fsm_extract; fsm_opt; opt_clean; fsm_recode -encoding one-hot; fsm_map",
    "fsm_detect; fsm_extract; fsm_recode -encoding binary; fsm_map", "memory_dff", "memory -nomap", "memory -nordff",
    "memory_share", "peepopt", "alumacc", "opt_dff", "opt_dff -nodffe", "opt_merge -share_all", "flatten", "splitnets",
    "rename -hide w:*", "rename -enumerate", "uniquify", "dffunmap", "zinit", "zinit -all", "opt_share", "pmuxtree",
    "simplemap", "freduce", "opt_expr -full", "proc; opt", "splitnets -driver", "clean -purge",
    "design -push; design -pop", "design -push-copy; techmap; opt; abc -dff; design -pop",
    "design -save kept; opt; techmap; design -load kept", "design -stash kept; design -load kept",
]
_FINE = [
    "opt", "opt -full", "opt_clean", "opt_clean -purge", "opt_merge -share_all", "opt_ffinv", "abc", "abc -g NAND",
    "abc -lut 4", "abc -lut 1:2; opt_lut; opt_ffinv", "abc -dff", "abc -dff; opt_clean", "simplemap", "opt_dff",
    # dfflegalize fails on an asynchronous reset when the technology has none.
    "dfflegalize -cell $_DFF_P_ 0 -cell $_DFF_PP0_ 01 -cell $_DLATCH_P_ x",
    "dfflegalize -cell $_DFF_P_ 1 -cell $_DFF_PP0_ 01 -cell $_DLATCH_P_ x",
    "dfflegalize -cell $_DFF_P_ 01 -cell $_DFFE_PP_ 01 -cell $_DFF_PP0_ 0 -cell $_DLATCH_P_ x",
    "dfflegalize -cell $_DFF_N_ 0 -cell $_DFF_NP1_ 01 -cell $_DLATCH_N_ x",
    "dfflegalize -mince 3 -cell $_SDFFE_PP0P_ 0 -cell $_DFF_PP0_ 01 -cell $_DLATCH_P_ x",
    "opt_ffinv; opt_clean; opt_ffinv", "zinit", "zinit -all", "rename -hide w:*; rename -enumerate", "rename -enumerate",
    "rename -hide w:*", "splitnets", "flatten", "freduce", "opt_lut", "opt_lut_ins", "shregmap -minlen 2",
    "async2sync", "synth -run fine:", "dffunmap", "design -push-copy; opt; design -pop",
    "design -save kept; abc -dff; design -load kept", "setundef -zero", "clean",
]
_LEGAL = "dfflegalize -cell $_DFF_P_ 01 -cell $_DFF_PP0_ 01 -cell $_DFF_PP1_ 01 -cell $_DLATCH_P_ 01"
_CELLS = "async2sync; dfflegalize -cell $_DFF_P_ 0 -cell $_DLATCH_P_ x; dfflibmap -liberty {cells}; " \
         "abc -liberty {cells}; opt_clean"


def flow(random, cells):
    """The passes after kpt_track; `cells` is a library of gates and a flip-flop."""
    steps = [random.choice(["proc", "proc; flatten", "proc; flatten; opt -nodffe -nosdff", "proc; opt"])]
    if random.random() < 0.15:
        steps = ["synth -top top" + random.choice(["", " -flatten"])]
    steps += [random.choice(_COARSE) for _ in range(random.randint(0, 5))]
    # dfflegalize fails on a latch that has to become a flip-flop, so the final passes handle these.
    steps += [random.choice(["memory; opt; techmap", "memory; techmap; opt", "opt_clean; memory_map; techmap"])]
    steps += [random.choice(_FINE) for _ in range(random.randint(0, 5))]
    if random.random() < 0.2:
        steps += [_CELLS.format(cells=cells)]
    elif random.random() < 0.1:
        steps += [_LEGAL]
    if random.random() < 0.5:
        steps += ["flatten; opt_clean"]
    return steps
