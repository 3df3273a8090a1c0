# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './generated.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [75:105]
set xtics ('75' 75, '80' 80, '85' 85, '90' 90, '95' 95, '100' 100, '105' 105, '' 76 1, '' 77 1, '' 78 1, '' 79 1, '' 81 1, '' 82 1, '' 83 1, '' 84 1, '' 86 1, '' 87 1, '' 88 1, '' 89 1, '' 91 1, '' 92 1, '' 93 1, '' 94 1, '' 96 1, '' 97 1, '' 98 1, '' 99 1, '' 101 1, '' 102 1, '' 103 1, '' 104 1)
set yrange [0:100.08]
set ytics ('0' -0, '20' 20, '40' 40, '60' 60, '80' 80, '100' 100, '' 5 1, '' 10 1, '' 15 1, '' 25 1, '' 30 1, '' 35 1, '' 45 1, '' 50 1, '' 55 1, '' 65 1, '' 70 1, '' 75 1, '' 85 1, '' 90 1, '' 95 1)
set label 'Two muons' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'mass [GeV]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Sum of weights / GeV' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.63893, graph 0.51857 to graph 0.9865, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.64937, graph 0.93696 left front font ',8.5'
set label '375' at graph 0.97606, graph 0.93696 right front font ',8.5'
set label 'Sum of weights' at graph 0.64937, graph 0.88263 left front font ',8.5'
set label '381.24' at graph 0.97606, graph 0.88263 right front font ',8.5'
set label 'Mean' at graph 0.64937, graph 0.82829 left front font ',8.5'
set label '91.114' at graph 0.97606, graph 0.82829 right front font ',8.5'
set label 'RMS' at graph 0.64937, graph 0.77395 left front font ',8.5'
set label '3.308' at graph 0.97606, graph 0.77395 right front font ',8.5'
set label 'Underflow' at graph 0.64937, graph 0.71961 left front font ',8.5'
set label '14' at graph 0.97606, graph 0.71961 right front font ',8.5'
set label 'Underflow weight' at graph 0.64937, graph 0.66528 left front font ',8.5'
set label '15.856' at graph 0.97606, graph 0.66528 right front font ',8.5'
set label 'Overflow' at graph 0.64937, graph 0.61094 left front font ',8.5'
set label '11' at graph 0.97606, graph 0.61094 right front font ',8.5'
set label 'Overflow weight' at graph 0.64937, graph 0.5566 left front font ',8.5'
set label '12.926' at graph 0.97606, graph 0.5566 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './generated.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './generated.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
