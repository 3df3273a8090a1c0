# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './energies.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [30:90]
set xtics ('30' 30, '40' 40, '50' 50, '60' 60, '70' 70, '80' 80, '90' 90, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1, '' 62 1, '' 64 1, '' 66 1, '' 68 1, '' 72 1, '' 74 1, '' 76 1, '' 78 1, '' 82 1, '' 84 1, '' 86 1, '' 88 1)
set yrange [0:304.89]
set ytics ('0' -0, '50' 50, '100' 100, '150' 150, '200' 200, '250' 250, '300' 300, '' 10 1, '' 20 1, '' 30 1, '' 40 1, '' 60 1, '' 70 1, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1, '' 210 1, '' 220 1, '' 230 1, '' 240 1, '' 260 1, '' 270 1, '' 280 1, '' 290 1)
set label 'Calibrated hits' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'Energy (keV)' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Entries / bin' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.7616, graph 0.73592 to graph 0.9865, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.77204, graph 0.93696 left front font ',8.5'
set label '2750' at graph 0.97606, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.77204, graph 0.88263 left front font ',8.5'
set label '60.059' at graph 0.97606, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.77204, graph 0.82829 left front font ',8.5'
set label '6.1368' at graph 0.97606, graph 0.82829 right front font ',8.5'
set label 'NaN' at graph 0.77204, graph 0.77395 left front font ',8.5'
set label '250' at graph 0.97606, graph 0.77395 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './energies.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './energies.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
