# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front out nomirror scale 0.7,0.35
set lmargin at screen 0.096552
set rmargin at screen 0.84407
data = './directions.dat'
set bmargin at screen 0.155
set tmargin at screen 0.85952
set xrange [-1:1]
set xtics ('−1.0' -1, '−0.5' -0.5, '0.0' 0, '0.5' 0.5, '1.0' 1, '' -0.9 1, '' -0.8 1, '' -0.7000000000000001 1, '' -0.6000000000000001 1, '' -0.4 1, '' -0.30000000000000004 1, '' -0.2 1, '' -0.1 1, '' 0.1 1, '' 0.2 1, '' 0.30000000000000004 1, '' 0.4 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1)
set yrange [-3.141592653589793:3.141592653589793]
set ytics ('−3' -3, '−2' -2, '−1' -1, '0' 0, '1' 1, '2' 2, '3' 3, '' -2.8000000000000003 1, '' -2.6 1, '' -2.4000000000000004 1, '' -2.2 1, '' -1.8 1, '' -1.6 1, '' -1.4000000000000001 1, '' -1.2000000000000002 1, '' -0.8 1, '' -0.6000000000000001 1, '' -0.4 1, '' -0.2 1, '' 0.2 1, '' 0.4 1, '' 0.6000000000000001 1, '' 0.8 1, '' 1.2000000000000002 1, '' 1.4000000000000001 1, '' 1.6 1, '' 1.8 1, '' 2.2 1, '' 2.4000000000000004 1, '' 2.6 1, '' 2.8000000000000003 1)
set label 'Directions of scattered particles' at screen 0.096552, screen 0.94807 left font ',12.6'
set label '8000 entries, mean (0.00103, 0.00618), RMS (0.635, 1.86), correlation −0.00897' at screen 0.096552, screen 0.88583 left textcolor rgb '#404040' font ',8.5'
set label 'cos θ' at screen 0.84407, screen 0.036433 right font ',12'
set label 'φ [rad]' at screen 0.022146, screen 0.85952 right rotate by 90 font ',12'
set label 'Entries / bin' at screen 0.98035, screen 0.85952 right rotate by 90 font ',12'
set key off
set palette defined (0 '#440154', 1 '#472D7B', 2 '#3B528B', 3 '#2C728E', 4 '#21918C', 5 '#28AE80', 6 '#5EC962', 7 '#ADDC30', 8 '#FDE725')
set colorbox user origin screen 0.86595, screen 0.155 size screen 0.028125, screen 0.70452
set cbrange [0:29]
set cbtics ('0' -0, '5' 5, '10' 10, '15' 15, '20' 20, '25' 25, '' 1 1, '' 2 1, '' 3 1, '' 4 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '' 11 1, '' 12 1, '' 13 1, '' 14 1, '' 16 1, '' 17 1, '' 18 1, '' 19 1, '' 21 1, '' 22 1, '' 23 1, '' 24 1, '' 26 1, '' 27 1, '' 28 1, '' 29 1)
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './directions.png'
plot data index 0 using 1:3:1:($2+0.001):3:($4+0.0031416):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './directions.svg'
plot data index 0 using 1:3:1:($2+0.001):3:($4+0.0031416):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
