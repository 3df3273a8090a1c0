# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './cumulative.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0:100]
set xtics ('0' -0, '20' 20, '40' 40, '60' 60, '80' 80, '100' 100, '' 5 1, '' 10 1, '' 15 1, '' 25 1, '' 30 1, '' 35 1, '' 45 1, '' 50 1, '' 55 1, '' 65 1, '' 70 1, '' 75 1, '' 85 1, '' 90 1, '' 95 1)
set yrange [0:1.0953]
set ytics ('0.0' -0, '0.2' 0.2, '0.4' 0.4, '0.6' 0.6, '0.8' 0.8, '1.0' 1, '' 0.05 1, '' 0.1 1, '' 0.15000000000000002 1, '' 0.25 1, '' 0.30000000000000004 1, '' 0.35000000000000003 1, '' 0.45 1, '' 0.5 1, '' 0.55 1, '' 0.65 1, '' 0.7000000000000001 1, '' 0.75 1, '' 0.8500000000000001 1, '' 0.9 1, '' 0.9500000000000001 1, '' 1.05 1)
set label 'Distribution function' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'energy [keV]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'part below the upper edge' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './cumulative.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './cumulative.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
