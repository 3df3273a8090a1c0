# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.96729
data = './projection.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [-1:1]
set xtics ('−1.0' -1, '−0.5' -0.5, '0.0' 0, '0.5' 0.5, '1.0' 1, '' -0.9 1, '' -0.8 1, '' -0.7000000000000001 1, '' -0.6000000000000001 1, '' -0.4 1, '' -0.30000000000000004 1, '' -0.2 1, '' -0.1 1, '' 0.1 1, '' 0.2 1, '' 0.30000000000000004 1, '' 0.4 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1)
set yrange [0:640.99]
set ytics ('0' -0, '100' 100, '200' 200, '300' 300, '400' 400, '500' 500, '600' 600, '' 20 1, '' 40 1, '' 60 1, '' 80 1, '' 120 1, '' 140 1, '' 160 1, '' 180 1, '' 220 1, '' 240 1, '' 260 1, '' 280 1, '' 320 1, '' 340 1, '' 360 1, '' 380 1, '' 420 1, '' 440 1, '' 460 1, '' 480 1, '' 520 1, '' 540 1, '' 560 1, '' 580 1, '' 620 1, '' 640 1)
set label 'Scattered particles' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'cos θ' at screen 0.96729, screen 0.036433 right font ',12'
set label 'Entries / bin' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.72064, graph 0.79025 to graph 0.98643, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.73113, graph 0.93696 left front font ',8.5'
set label '8000' at graph 0.97593, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.73113, graph 0.88263 left front font ',8.5'
set label '0.0010317' at graph 0.97593, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.73113, graph 0.82829 left front font ',8.5'
set label '0.63475' at graph 0.97593, graph 0.82829 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './projection.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './projection.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
