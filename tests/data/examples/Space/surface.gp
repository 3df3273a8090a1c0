# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5
set errorbars small
set tics out nomirror scale 1.2,0.6
set mxtics
set mytics
set lmargin 11.5
set rmargin 12
set bmargin 3.8
set tmargin 3.6
set key off
set colorbox
set palette defined (0 '#440154', 1 '#472D7B', 2 '#3B528B', 3 '#2C728E', 4 '#21918C', 5 '#28AE80', 6 '#5EC962', 7 '#ADDC30', 8 '#FDE725')
set label '49821 entries, mean (0.00256, -0.00315), RMS (0.988, 1.49), correlation 0.00273' at screen 0.985, graph 1.04 right font 'DejaVu Sans,22' textcolor rgb '#404040'
set xrange [-3:3]
set yrange [-5:5]
set cbrange [994.7376751307849:1006.7028107970474]
set title 'Height [mm]' font 'DejaVu Sans,34' offset 0,0.9
set xlabel 'x [mm]' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'y [mm]' font 'DejaVu Sans,32' offset -1.2,0
set cblabel 'Mean' font 'DejaVu Sans,32' offset 1.2,0
data = './surface.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './surface.png'
plot data using 1:3:1:($2+0.003):3:($4+0.005):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './surface.svg'
plot data using 1:3:1:($2+0.003):3:($4+0.005):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
