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
set xrange [-1:1]
set yrange [-1:1]
set cbrange [0:0.0675942601958431]
set title 'Photons in each second' font 'DejaVu Sans,34' offset 0,0.9
set xlabel 'x (deg)' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'y (deg)' font 'DejaVu Sans,32' offset -1.2,0
set cblabel 'rate (1/s)' font 'DejaVu Sans,32' offset 1.2,0
data = './photons.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './photons.png'
plot data using 1:3:1:($2+0.001):3:($4+0.001):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './photons.svg'
plot data using 1:3:1:($2+0.001):3:($4+0.001):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
