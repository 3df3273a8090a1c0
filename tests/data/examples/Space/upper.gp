# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front out nomirror scale 0.7,0.35
set lmargin at screen 0.096552
set rmargin at screen 0.81761
data = './upper.dat'
set bmargin at screen 0.155
set tmargin at screen 0.85952
set xrange [-3:3]
set xtics ('−3' -3, '−2' -2, '−1' -1, '0' 0, '1' 1, '2' 2, '3' 3, '' -2.8000000000000003 1, '' -2.6 1, '' -2.4000000000000004 1, '' -2.2 1, '' -1.8 1, '' -1.6 1, '' -1.4000000000000001 1, '' -1.2000000000000002 1, '' -0.8 1, '' -0.6000000000000001 1, '' -0.4 1, '' -0.2 1, '' 0.2 1, '' 0.4 1, '' 0.6000000000000001 1, '' 0.8 1, '' 1.2000000000000002 1, '' 1.4000000000000001 1, '' 1.6 1, '' 1.8 1, '' 2.2 1, '' 2.4000000000000004 1, '' 2.6 1, '' 2.8000000000000003 1)
set yrange [-5:5]
set ytics ('−4' -4, '−2' -2, '0' 0, '2' 2, '4' 4, '' -5 1, '' -4.5 1, '' -3.5 1, '' -3 1, '' -2.5 1, '' -1.5 1, '' -1 1, '' -0.5 1, '' 0.5 1, '' 1 1, '' 1.5 1, '' 2.5 1, '' 3 1, '' 3.5 1, '' 4.5 1, '' 5 1)
set label 'Points above 1000 mm' at screen 0.096552, screen 0.94807 left font ',12.6'
set label '24915 entries, mean (0.00101, 0.000331), RMS (0.985, 1.5), correlation 0.52' at screen 0.096552, screen 0.88583 left textcolor rgb '#404040' font ',8.5'
set label 'x [mm]' at screen 0.81761, screen 0.036433 right font ',12'
set label 'y [mm]' at screen 0.022146, screen 0.85952 right rotate by 90 font ',12'
set label 'Entries / bin' at screen 0.98035, screen 0.85952 right rotate by 90 font ',12'
set key off
set palette defined (0 '#440154', 1 '#472D7B', 2 '#3B528B', 3 '#2C728E', 4 '#21918C', 5 '#28AE80', 6 '#5EC962', 7 '#ADDC30', 8 '#FDE725')
set colorbox user origin screen 0.83949, screen 0.155 size screen 0.028125, screen 0.70452
set cbrange [0:1278]
set cbtics ('0' -0, '200' 200, '400' 400, '600' 600, '800' 800, '1000' 1000, '1200' 1200, '' 50 1, '' 100 1, '' 150 1, '' 250 1, '' 300 1, '' 350 1, '' 450 1, '' 500 1, '' 550 1, '' 650 1, '' 700 1, '' 750 1, '' 850 1, '' 900 1, '' 950 1, '' 1050 1, '' 1100 1, '' 1150 1, '' 1250 1)
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './upper.png'
plot data index 0 using 1:3:1:($2+0.003):3:($4+0.005):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './upper.svg'
plot data index 0 using 1:3:1:($2+0.003):3:($4+0.005):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
