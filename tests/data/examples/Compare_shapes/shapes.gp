# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.12301
set rmargin at screen 0.97188
data = './shapes.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0:100]
set xtics ('0' -0, '20' 20, '40' 40, '60' 60, '80' 80, '100' 100, '' 5 1, '' 10 1, '' 15 1, '' 25 1, '' 30 1, '' 35 1, '' 45 1, '' 50 1, '' 55 1, '' 65 1, '' 70 1, '' 75 1, '' 85 1, '' 90 1, '' 95 1)
set yrange [0:0.10263]
set ytics ('0.00' -0, '0.02' 0.02, '0.04' 0.04, '0.06' 0.06, '0.08' 0.08, '0.10' 0.1, '' 0.005 1, '' 0.01 1, '' 0.015 1, '' 0.025 1, '' 0.03 1, '' 0.035 1, '' 0.045 1, '' 0.05 1, '' 0.055 1, '' 0.065 1, '' 0.07 1, '' 0.075 1, '' 0.085 1, '' 0.09 1, '' 0.095 1)
set label 'Two spectra of unit area' at screen 0.12301, screen 0.942 left font ',12.6'
set label 'energy [keV]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Sum of weights / (2.5 keV)' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.98629, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',10'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './shapes.png'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' notitle, \
     data index 3 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'first', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' title 'second'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './shapes.svg'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' notitle, \
     data index 3 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'first', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' title 'second'
set output
