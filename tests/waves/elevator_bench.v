// People press buttons of the elevator, and stand in its door.
`timescale 1ns / 1ps
module tb;
  reg clk = 0, rst = 1, door_blocked = 0;
  reg [3:0] press = 0;
  wire [3:0] lamps, trips;
  wire [1:0] floor;
  wire moving, door_open, alarm;
  integer seed = 1, k;
  elevator dut(clk, rst, press, door_blocked, lamps, floor, moving, door_open, alarm, trips);
  always #5 clk = ~clk;
  initial begin
    #22 rst = 0;
    for (k = 0; k < 400; k = k + 1) begin
      @(negedge clk) press = ($random(seed) % 8 == 0) ? 4'b0001 << ($random(seed) & 3) : 0;
      door_blocked = $random(seed) % 4 == 0;
    end
    $finish;
  end
endmodule
