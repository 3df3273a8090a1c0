# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.12301
set rmargin at screen 0.97188
data = './hits.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [-0.5:10.5]
set xtics ('0' 0, '1' 1, '2' 2, '3' 3, '4' 4, '5' 5, '6' 6, '7' 7, '8' 8, '9' 9, '10' 10)
set yrange [0:5625.4]
set ytics ('0' -0, '1000' 1000, '2000' 2000, '3000' 3000, '4000' 4000, '5000' 5000, '' 200 1, '' 400 1, '' 600 1, '' 800 1, '' 1200 1, '' 1400 1, '' 1600 1, '' 1800 1, '' 2200 1, '' 2400 1, '' 2600 1, '' 2800 1, '' 3200 1, '' 3400 1, '' 3600 1, '' 3800 1, '' 4200 1, '' 4400 1, '' 4600 1, '' 4800 1, '' 5200 1, '' 5400 1, '' 5600 1)
set label 'Hits in each event' at screen 0.12301, screen 0.942 left font ',12.6'
set label 'number of hits' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Sum of weights / bin' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.67961, graph 0.84459 to graph 0.98629, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.69021, graph 0.93696 left front font ',8.5'
set label '20000' at graph 0.97569, graph 0.93696 right front font ',8.5'
set label 'Sum of weights' at graph 0.69021, graph 0.88263 left front font ',8.5'
set label '20059' at graph 0.97569, graph 0.88263 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './hits.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './hits.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
