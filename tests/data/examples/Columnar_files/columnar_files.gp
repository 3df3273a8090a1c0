# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './columnar_files.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0:20]
set xtics ('0' -0, '5' 5, '10' 10, '15' 15, '20' 20, '' 1 1, '' 2 1, '' 3 1, '' 4 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '' 11 1, '' 12 1, '' 13 1, '' 14 1, '' 16 1, '' 17 1, '' 18 1, '' 19 1)
set yrange [0:152.71]
set ytics ('0' -0, '20' 20, '40' 40, '60' 60, '80' 80, '100' 100, '120' 120, '140' 140, '' 5 1, '' 10 1, '' 15 1, '' 25 1, '' 30 1, '' 35 1, '' 45 1, '' 50 1, '' 55 1, '' 65 1, '' 70 1, '' 75 1, '' 85 1, '' 90 1, '' 95 1, '' 105 1, '' 110 1, '' 115 1, '' 125 1, '' 130 1, '' 135 1, '' 145 1, '' 150 1)
set label 'Two runs' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'energy of a hit (MeV)' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Entries / bin' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './columnar_files.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './columnar_files.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
