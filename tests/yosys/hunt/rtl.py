"""Random designs with all kinds of registers.

Conditions read only registers that have a value from the first reset on. When a condition is unknown,
a simulation takes the else branch, while a netlist passes the unknown value on.
"""


class Design:
    """Grows a design block by block; `text` is its Verilog, with `top` as the top module."""

    def __init__(self, random):
        self._random = random
        self._body = []
        self._modules = []
        self._outputs = []
        self._known = ["a[%d]" % i for i in range(4)] + ["b[%d]" % i for i in range(4)] + ["en"]
        self._data = list(self._known)
        self._count = 0
        blocks = [self._plain, self._plain, self._machine, self._twins, self._constant, self._unused, self._shift,
                  self._memory, self._latch, self._instance, self._counter, self._wide, self._inverted, self._chain]
        for _ in range(random.randint(3, 7)):
            random.choice(blocks)()
        self.text = self._finish()

    def _name(self, stem):
        self._count += 1
        return "%s%d" % (stem, self._count)

    def _expression(self, depth=2, known=False):
        signals = self._known if known else self._data
        if depth == 0 or self._random.random() < 0.2:
            return self._random.choice(["", "~"]) + self._random.choice(signals)
        left = self._expression(depth - 1, known)
        right = self._expression(depth - 1, known)
        kind = self._random.randrange(5)
        if kind == 4:
            return "(%s ? %s : %s)" % (self._expression(0, known), left, right)
        return "(%s %s %s)" % (left, "&|^^"[kind], right)

    def _vector(self, width, known=False):
        return "{%s}" % ", ".join(self._expression(2, known) for _ in range(width))

    def _value(self, width):
        return "%d'd%d" % (width, self._random.randrange(1 << width))

    def _read(self, name, width, known):
        bits = ["%s[%d]" % (name, i) for i in range(width)] if width > 1 else [name]
        self._data += bits
        if known:
            self._known += bits
        if self._random.random() < 0.7:
            self._outputs.append("^" + name if self._random.random() < 0.5 else "~" + bits[0])

    def _edge(self):
        return self._random.choice(["posedge clk"] * 5 + ["negedge clk"])

    def _always(self, name, value, width, known, edge=None):
        """One register with a reset of some kind, or none."""
        kind = self._random.choice(["sync", "sync", "async", "low", "init", "none"])
        edge = edge or self._edge()
        if kind == "none":
            known = False
        init = " = " + self._value(width) if kind == "init" or self._random.random() < 0.15 else ""
        value = self._vector(width, known) if value is None else value
        load = "%s <= %s;" % (name, value)
        if self._random.random() < 0.3:
            load = "if (!rst && %s) %s" % (self._expression(1, True), load)
        reset = "%s <= %s; else" % (name, self._value(width))
        self._body.append("reg [%d:0] %s%s;" % (width - 1, name, init) if width > 1 else "reg %s%s;" % (name, init))
        if kind == "sync":
            self._body.append("always @(%s) if (rst) %s %s" % (edge, reset, load))
        elif kind == "async":
            self._body.append("always @(%s or posedge arst) if (arst) %s %s" % (edge, reset, load))
        elif kind == "low":
            self._body.append("always @(%s or negedge arstn) if (!arstn) %s %s" % (edge, reset, load))
        else:
            self._body.append("always @(%s) %s" % (edge, load))
        return kind != "none" and known

    def _plain(self):
        name, width = self._name("r"), self._random.randint(1, 5)
        self._read(name, width, self._always(name, None, width, self._random.random() < 0.5))

    def _machine(self):
        name, width = self._name("state"), self._random.randint(2, 4)
        states = self._random.sample(range(1 << width), self._random.randint(3, min(6, 1 << width)))
        lines = []
        for state in states:
            to, other = self._random.choice(states), self._random.choice(states)
            lines.append("%d'd%d: if (%s) %s <= %d'd%d; else %s <= %d'd%d;"
                         % (width, state, self._expression(1, True), name, width, to, name, width, other))
        lines.append("default: %s <= %d'd%d;" % (name, width, states[0]))
        mark = '(* fsm_encoding = "auto" *) ' if self._random.random() < 0.5 else ""
        reset = self._random.choice(["rst", "rst", "arst"])
        event = self._edge() + (" or posedge arst" if reset == "arst" else "")
        self._body.append("%sreg [%d:0] %s;" % (mark, width - 1, name))
        self._body.append("always @(%s) if (%s) %s <= %d'd%d; else case (%s)\n  %s\nendcase"
                          % (event, reset, name, width, states[0], name, "\n  ".join(lines)))
        for state in self._random.sample(states, 2):
            wire = self._name("is")
            self._body.append("wire %s = %s == %d'd%d;" % (wire, name, width, state))
            self._known.append(wire)
            self._data.append(wire)
            self._outputs.append(wire)
        if self._random.random() < 0.3:
            self._read(name, width, True)

    def _twins(self):
        width, edge = self._random.randint(1, 3), self._edge()
        value = self._vector(width)
        for other in [value] + self._random.choice([[value], ["~" + value]]) * self._random.randint(1, 2):
            name = self._name("twin")
            init = self._random.choice(["", "", " = %d'd0" % width])
            self._body.append("reg [%d:0] %s%s; always @(%s) %s <= %s;" % (width - 1, name, init, edge, name, other))
            self._data += ["%s[%d]" % (name, i) for i in range(width)]
            self._outputs.append("^" + name)

    def _constant(self):
        name, value = self._name("fixed"), self._random.randrange(2)
        self._body.append("reg %s = 1'd%d;" % (name, value))
        stays = "%s & %s" if value == 0 else "%s | %s"
        self._body.append("always @(posedge clk) %s <= %s;" % (name, stays % (name, self._expression(1, True))))
        self._read(name, 1, True)

    def _unused(self):
        name = self._name("unused")
        width = self._random.randint(1, 4)
        self._body.append("reg [%d:0] %s; always @(posedge clk) %s <= %s;"
                          % (width - 1, name, name, self._vector(width)))

    def _shift(self):
        name, width = self._name("shift"), self._random.randint(3, 6)
        init = " = " + self._value(width) if self._random.random() < 0.5 else ""
        self._body.append("reg [%d:0] %s%s;" % (width - 1, name, init))
        self._body.append("always @(%s) %s <= {%s[%d:0], %s};"
                          % (self._edge(), name, name, width - 2, self._expression(1)))
        self._outputs.append("%s[%d]" % (name, width - 1))
        self._data.append("%s[%d]" % (name, width - 1))

    def _memory(self):
        name, out, width = self._name("m"), self._name("word"), self._random.randint(1, 3)
        self._body.append("reg [%d:0] %s [3:0];" % (width - 1, name))
        self._body.append("always @(posedge clk) if (%s) %s[a[1:0]] <= %s;"
                          % (self._expression(0, True), name, self._vector(width)))
        kind = self._random.randrange(3)
        if kind == 0:
            self._body.append("wire [%d:0] %s = %s[b[1:0]];" % (width - 1, out, name))
        elif kind == 1:
            self._body.append("reg [%d:0] %s; always @(posedge clk) %s <= %s[b[1:0]];" % (width - 1, out, out, name))
        else:
            address = self._name("address")
            self._body.append("reg [1:0] %s; always @(posedge clk) %s <= b[1:0];" % (address, address))
            self._body.append("wire [%d:0] %s = %s[%s];" % (width - 1, out, name, address))
        self._outputs.append("^" + out)

    def _latch(self):
        name, width = self._name("latch"), self._random.randint(1, 3)
        self._body.append("reg [%d:0] %s; always @* if (len) %s = %s;" % (width - 1, name, name, self._vector(width)))
        self._read(name, width, False)

    def _instance(self):
        module, width = self._name("sub"), self._random.randint(1, 3)
        reset = self._random.choice(["if (rst) q <= 0; else ", ""])
        self._modules.append(
            "module %s(input clk, input rst, input [%d:0] d, output reg [%d:0] q, output p);\n"
            "  reg [%d:0] s = 0;\n  always @(posedge clk) begin %sq <= d; s <= d ^ {s, 1'b1}; end\n"
            "  assign p = %ss[%d];\nendmodule\n"
            % (module, width - 1, width - 1, width - 1, reset, self._random.choice(["", "~"]), width - 1))
        for _ in range(self._random.randint(1, 2)):
            q, p = self._name("q"), self._name("p")
            self._body.append("wire [%d:0] %s; wire %s;" % (width - 1, q, p))
            self._body.append("%s u_%s(.clk(clk), .rst(rst), .d(%s), .q(%s), .p(%s));"
                              % (module, q, self._vector(width), q, p))
            self._outputs += ["^" + q, p]
            self._data.append(p)

    def _counter(self):
        name, width = self._name("count"), self._random.randint(2, 5)
        known = self._always(name, name + " + 1'b1", width, True, "posedge clk")
        self._read(name, width, known)
        self._outputs.append(name + "[0]")

    def _wide(self):
        name = self._name("wide")
        width = self._random.randint(6, 9)
        self._body.append("reg [%d:0] %s; always @(posedge clk) if (rst) %s <= 0; else %s <= {4'd0, a} %s {1'b0, b};"
                          % (width - 1, name, name, name, self._random.choice("+-*")))
        self._outputs.append("^%s[2:0]" % name)

    def _inverted(self):
        name, out = self._name("inv"), self._name("outs")
        init = self._random.choice(["", " = 1'b0", " = 1'b1"])
        self._body.append("reg %s%s; always @(posedge clk) %s <= ~(%s);" % (name, init, name, self._expression(1)))
        self._body.append("wire %s = ~%s;" % (out, name))
        self._outputs.append(out)

    def _chain(self):
        """Registers in a chain, with inverters between them that passes may move."""
        before, edge = self._expression(0), self._edge()
        for _ in range(self._random.randint(2, 4)):
            name = self._name("link")
            init = self._random.choice(["", " = 1'b0", " = 1'b1"])
            self._body.append("reg %s%s; always @(%s) %s <= %s%s;"
                              % (name, init, edge, name, self._random.choice(["", "~"]), "(%s)" % before))
            before = name
        self._outputs.append(before)

    def _finish(self):
        outputs = self._outputs or ["en"]
        return "%smodule top(input clk, rst, arst, arstn, en, len, input [3:0] a, b, output [%d:0] y);\n%s\n" \
               "assign y = {%s};\nendmodule\n" % ("".join(self._modules), len(outputs) - 1, "\n".join(self._body),
                                                  ", ".join("(%s)" % output for output in outputs))
