// The cells of cells.lib as they behave.
module FLOP(input D, input CK, output reg Q);
  always @(posedge CK) Q <= D;
endmodule

module INV(input A, output Y);
  assign Y = ~A;
endmodule

module NAND2(input A, input B, output Y);
  assign Y = ~(A & B);
endmodule

module NOR2(input A, input B, output Y);
  assign Y = ~(A | B);
endmodule

module BUFF(input A, output Y);
  assign Y = A;
endmodule
