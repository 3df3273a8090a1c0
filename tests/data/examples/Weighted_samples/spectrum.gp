# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './spectrum.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [60:140]
set xtics ('60' 60, '70' 70, '80' 80, '90' 90, '100' 100, '110' 110, '120' 120, '130' 130, '140' 140, '' 62 1, '' 64 1, '' 66 1, '' 68 1, '' 72 1, '' 74 1, '' 76 1, '' 78 1, '' 82 1, '' 84 1, '' 86 1, '' 88 1, '' 92 1, '' 94 1, '' 96 1, '' 98 1, '' 102 1, '' 104 1, '' 106 1, '' 108 1, '' 112 1, '' 114 1, '' 116 1, '' 118 1, '' 122 1, '' 124 1, '' 126 1, '' 128 1, '' 132 1, '' 134 1, '' 136 1, '' 138 1)
set yrange [0:503.89]
set ytics ('0' -0, '100' 100, '200' 200, '300' 300, '400' 400, '500' 500, '' 20 1, '' 40 1, '' 60 1, '' 80 1, '' 120 1, '' 140 1, '' 160 1, '' 180 1, '' 220 1, '' 240 1, '' 260 1, '' 280 1, '' 320 1, '' 340 1, '' 360 1, '' 380 1, '' 420 1, '' 440 1, '' 460 1, '' 480 1)
set label 'Spectrum' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'Mass (GeV)' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Expected events' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.63893, graph 0.51857 to graph 0.9865, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.64937, graph 0.93696 left front font ',8.5'
set label '1377' at graph 0.97606, graph 0.93696 right front font ',8.5'
set label 'Sum of weights' at graph 0.64937, graph 0.88263 left front font ',8.5'
set label '1310.4' at graph 0.97606, graph 0.88263 right front font ',8.5'
set label 'Mean' at graph 0.64937, graph 0.82829 left front font ',8.5'
set label '90.635' at graph 0.97606, graph 0.82829 right front font ',8.5'
set label 'RMS' at graph 0.64937, graph 0.77395 left front font ',8.5'
set label '11.848' at graph 0.97606, graph 0.77395 right front font ',8.5'
set label 'Underflow' at graph 0.64937, graph 0.71961 left front font ',8.5'
set label '9' at graph 0.97606, graph 0.71961 right front font ',8.5'
set label 'Underflow weight' at graph 0.64937, graph 0.66528 left front font ',8.5'
set label '10' at graph 0.97606, graph 0.66528 right front font ',8.5'
set label 'Overflow' at graph 0.64937, graph 0.61094 left front font ',8.5'
set label '114' at graph 0.97606, graph 0.61094 right front font ',8.5'
set label 'Overflow weight' at graph 0.64937, graph 0.5566 left front font ',8.5'
set label '79.556' at graph 0.97606, graph 0.5566 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './spectrum.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './spectrum.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
