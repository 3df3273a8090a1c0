# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './deposits.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0:20]
set xtics ('0' -0, '5' 5, '10' 10, '15' 15, '20' 20, '' 1 1, '' 2 1, '' 3 1, '' 4 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '' 11 1, '' 12 1, '' 13 1, '' 14 1, '' 16 1, '' 17 1, '' 18 1, '' 19 1)
set yrange [0:402.64]
set ytics ('0' -0, '100' 100, '200' 200, '300' 300, '400' 400, '' 20 1, '' 40 1, '' 60 1, '' 80 1, '' 120 1, '' 140 1, '' 160 1, '' 180 1, '' 220 1, '' 240 1, '' 260 1, '' 280 1, '' 320 1, '' 340 1, '' 360 1, '' 380 1)
set label 'Energy in a layer' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'energy (MeV)' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Entries / bin' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.9865, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',10'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './deposits.png'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' notitle, \
     data index 3 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'from the ntuple', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' title 'filled by Geant4'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './deposits.svg'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' notitle, \
     data index 3 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'from the ntuple', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' title 'filled by Geant4'
set output
