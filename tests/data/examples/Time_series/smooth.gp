# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.12301
set rmargin at screen 0.97188
data = './smooth.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0:600]
set xtics ('0' -0, '100' 100, '200' 200, '300' 300, '400' 400, '500' 500, '600' 600, '' 20 1, '' 40 1, '' 60 1, '' 80 1, '' 120 1, '' 140 1, '' 160 1, '' 180 1, '' 220 1, '' 240 1, '' 260 1, '' 280 1, '' 320 1, '' 340 1, '' 360 1, '' 380 1, '' 420 1, '' 440 1, '' 460 1, '' 480 1, '' 520 1, '' 540 1, '' 560 1, '' 580 1)
set yrange [19.51890052473621:20.362]
set ytics ('19.6' 19.6, '19.8' 19.8, '20.0' 20, '20.2' 20.2, '' 19.55 1, '' 19.650000000000002 1, '' 19.700000000000003 1, '' 19.75 1, '' 19.85 1, '' 19.900000000000002 1, '' 19.950000000000003 1, '' 20.05 1, '' 20.1 1, '' 20.150000000000002 1, '' 20.25 1, '' 20.3 1, '' 20.35 1)
set label 'Running mean of 25 readings of each channel' at screen 0.12301, screen 0.942 left font ',12.6'
set label 'Time (s)' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Signal' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.013713, graph 0.025 to graph 0.23861, graph 0.20975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.024311, graph 0.17171 left front font ',8.5'
set label '3000' at graph 0.22801, graph 0.17171 right front font ',8.5'
set label 'Mean' at graph 0.024311, graph 0.11737 left front font ',8.5'
set label '297.43' at graph 0.22801, graph 0.11737 right front font ',8.5'
set label 'RMS' at graph 0.024311, graph 0.063036 left front font ',8.5'
set label '172.98' at graph 0.22801, graph 0.063036 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './smooth.png'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './smooth.svg'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
