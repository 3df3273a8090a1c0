# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.12301
set rmargin at screen 0.97188
data = './cuts.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [-0.5:3.5]
set xtics ('0' -0, '1' 1, '2' 2, '3' 3)
set yrange [0:2208.3]
set ytics ('0' -0, '500' 500, '1000' 1000, '1500' 1500, '2000' 2000, '' 100 1, '' 200 1, '' 300 1, '' 400 1, '' 600 1, '' 700 1, '' 800 1, '' 900 1, '' 1100 1, '' 1200 1, '' 1300 1, '' 1400 1, '' 1600 1, '' 1700 1, '' 1800 1, '' 1900 1, '' 2100 1, '' 2200 1)
set label 'Cuts' at screen 0.12301, screen 0.942 left font ',12.6'
set label 'number of cuts' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Rows left' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './cuts.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './cuts.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
