# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.12301
set rmargin at screen 0.96729
data = './calibration.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [34.96973599999998:3028.966364]
set xtics ('500' 500, '1000' 1000, '1500' 1500, '2000' 2000, '2500' 2500, '3000' 3000, '' 100 1, '' 200 1, '' 300 1, '' 400 1, '' 600 1, '' 700 1, '' 800 1, '' 900 1, '' 1100 1, '' 1200 1, '' 1300 1, '' 1400 1, '' 1600 1, '' 1700 1, '' 1800 1, '' 1900 1, '' 2100 1, '' 2200 1, '' 2300 1, '' 2400 1, '' 2600 1, '' 2700 1, '' 2800 1, '' 2900 1)
set yrange [-82.01447558954231:1587.7]
set ytics ('0' -0, '500' 500, '1000' 1000, '1500' 1500, '' 100 1, '' 200 1, '' 300 1, '' 400 1, '' 600 1, '' 700 1, '' 800 1, '' 900 1, '' 1100 1, '' 1200 1, '' 1300 1, '' 1400 1)
set label 'Calibration of a germanium detector' at screen 0.12301, screen 0.942 left font ',12.6'
set label 'channel' at screen 0.96729, screen 0.036433 right font ',12'
set label 'energy [keV]' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.013788, graph 0.66158 left top Left reverse samplen 2 spacing 1.12 font ',10'
set object 1 rectangle from graph 0.013788, graph 0.68158 to graph 0.38861, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Points' at graph 0.024443, graph 0.93696 left front font ',8.5'
set label '12' at graph 0.37796, graph 0.93696 right front font ',8.5'
set label 'χ²/ndf' at graph 0.024443, graph 0.88263 left front font ',8.5'
set label '11.141 / 10' at graph 0.37796, graph 0.88263 right front font ',8.5'
set label 'p-value' at graph 0.024443, graph 0.82829 left front font ',8.5'
set label '0.34662' at graph 0.37796, graph 0.82829 right front font ',8.5'
set label 'offset' at graph 0.024443, graph 0.77395 left front font ',8.5'
set label '−11.54 ± 0.30' at graph 0.37796, graph 0.77395 right front font ',8.5'
set label 'gain' at graph 0.024443, graph 0.71961 left front font ',8.5'
set label '0.48716 ± 0.00025' at graph 0.37796, graph 0.71961 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './calibration.png'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Known gamma lines', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'offset + gain · channel'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './calibration.svg'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Known gamma lines', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'offset + gain · channel'
set output
