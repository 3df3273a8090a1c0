# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.096552
set rmargin at screen 0.97188
data = './database.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0:30]
set xtics ('0' -0, '5' 5, '10' 10, '15' 15, '20' 20, '25' 25, '30' 30, '' 1 1, '' 2 1, '' 3 1, '' 4 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '' 11 1, '' 12 1, '' 13 1, '' 14 1, '' 16 1, '' 17 1, '' 18 1, '' 19 1, '' 21 1, '' 22 1, '' 23 1, '' 24 1, '' 26 1, '' 27 1, '' 28 1, '' 29 1)
set yrange [5.057447929082445:11.786]
set ytics ('6' 6, '7' 7, '8' 8, '9' 9, '10' 10, '11' 11, '' 5.2 1, '' 5.4 1, '' 5.6000000000000005 1, '' 5.800000000000001 1, '' 6.2 1, '' 6.4 1, '' 6.6000000000000005 1, '' 6.800000000000001 1, '' 7.2 1, '' 7.4 1, '' 7.6000000000000005 1, '' 7.800000000000001 1, '' 8.200000000000001 1, '' 8.4 1, '' 8.6 1, '' 8.8 1, '' 9.200000000000001 1, '' 9.4 1, '' 9.600000000000001 1, '' 9.8 1, '' 10.200000000000001 1, '' 10.4 1, '' 10.600000000000001 1, '' 10.8 1, '' 11.200000000000001 1, '' 11.4 1, '' 11.600000000000001 1)
set label 'Energy in each layer' at screen 0.096552, screen 0.942 left font ',12.6'
set label 'depth (mm)' at screen 0.97188, screen 0.036433 right font ',12'
set label 'mean energy of a hit (MeV)' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './database.png'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './database.svg'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
