# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './window.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0:8.23875]
set xtics ('0' -0, '2' 2, '4' 4, '6' 6, '8' 8, '' 0.5 1, '' 1 1, '' 1.5 1, '' 2.5 1, '' 3 1, '' 3.5 1, '' 4.5 1, '' 5 1, '' 5.5 1, '' 6.5 1, '' 7 1, '' 7.5 1)
set logscale y
set yrange [1.5:211.54]
set ytics ('' 2 1, '' 3 1, '' 4 1, '' 5 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '10' 10, '' 20 1, '' 30 1, '' 40 1, '' 50 1, '' 60 1, '' 70 1, '' 80 1, '' 90 1, '100' 100, '' 200 1)
set label 'Decays between 1/4 and 4 lifetimes' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'delay [µs]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Decays' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.73434, graph 0.68158 to graph 0.9865, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.74478, graph 0.93696 left front font ',8.5'
set label '1503' at graph 0.97606, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.74478, graph 0.88263 left front font ',8.5'
set label '1.9379' at graph 0.97606, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.74478, graph 0.82829 left front font ',8.5'
set label '1.7627' at graph 0.97606, graph 0.82829 right front font ',8.5'
set label 'Underflow' at graph 0.74478, graph 0.77395 left front font ',8.5'
set label '423' at graph 0.97606, graph 0.77395 right front font ',8.5'
set label 'Overflow' at graph 0.74478, graph 0.71961 left front font ',8.5'
set label '74' at graph 0.97606, graph 0.71961 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './window.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './window.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
