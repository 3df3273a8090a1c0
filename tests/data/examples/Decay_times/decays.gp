# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.12301
set rmargin at screen 0.97188
data = './decays.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0.5:16]
set xtics ('2' 2, '4' 4, '6' 6, '8' 8, '10' 10, '12' 12, '14' 14, '16' 16, '' 0.5 1, '' 1 1, '' 1.5 1, '' 2.5 1, '' 3 1, '' 3.5 1, '' 4.5 1, '' 5 1, '' 5.5 1, '' 6.5 1, '' 7 1, '' 7.5 1, '' 8.5 1, '' 9 1, '' 9.5 1, '' 10.5 1, '' 11 1, '' 11.5 1, '' 12.5 1, '' 13 1, '' 13.5 1, '' 14.5 1, '' 15 1, '' 15.5 1)
set logscale y
set yrange [2:1059]
set ytics ('' 2 1, '' 3 1, '' 4 1, '' 5 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '10' 10, '' 20 1, '' 30 1, '' 40 1, '' 50 1, '' 60 1, '' 70 1, '' 80 1, '' 90 1, '100' 100, '' 200 1, '' 300 1, '' 400 1, '' 500 1, '' 600 1, '' 700 1, '' 800 1, '' 900 1, '1000' 1000)
set label 'Muons that stopped and decayed' at screen 0.12301, screen 0.942 left font ',12.6'
set label 'time [µs]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Decays / µs' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.65235, graph 0.62724 to graph 0.98629, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.66295, graph 0.93696 left front font ',8.5'
set label '1592' at graph 0.97569, graph 0.93696 right front font ',8.5'
set label 'Sum of weights' at graph 0.66295, graph 0.88263 left front font ',8.5'
set label '2821.5' at graph 0.97569, graph 0.88263 right front font ',8.5'
set label 'Mean' at graph 0.66295, graph 0.82829 left front font ',8.5'
set label '2.2319' at graph 0.97569, graph 0.82829 right front font ',8.5'
set label 'RMS' at graph 0.66295, graph 0.77395 left front font ',8.5'
set label '1.7494' at graph 0.97569, graph 0.77395 right front font ',8.5'
set label 'Overflow' at graph 0.66295, graph 0.71961 left front font ',8.5'
set label '3' at graph 0.97569, graph 0.71961 right front font ',8.5'
set label 'Overflow weight' at graph 0.66295, graph 0.66528 left front font ',8.5'
set label '1.5' at graph 0.97569, graph 0.66528 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './decays.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './decays.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
