# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './efficiency.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [-3.6363636363636362:94.54545454545455]
set xtics ('0' -0, '20' 20, '40' 40, '60' 60, '80' 80, '' 5 1, '' 10 1, '' 15 1, '' 25 1, '' 30 1, '' 35 1, '' 45 1, '' 50 1, '' 55 1, '' 65 1, '' 70 1, '' 75 1, '' 85 1, '' 90 1)
set yrange [0.14753723886278203:0.86807]
set ytics ('0.2' 0.2, '0.3' 0.3, '0.4' 0.4, '0.5' 0.5, '0.6' 0.6, '0.7' 0.7, '0.8' 0.8, '' 0.16 1, '' 0.18 1, '' 0.22 1, '' 0.24 1, '' 0.26 1, '' 0.28 1, '' 0.32 1, '' 0.34 1, '' 0.36 1, '' 0.38 1, '' 0.42 1, '' 0.44 1, '' 0.46 1, '' 0.48 1, '' 0.52 1, '' 0.54 1, '' 0.56 1, '' 0.58 1, '' 0.62 1, '' 0.64 1, '' 0.66 1, '' 0.68 1, '' 0.72 1, '' 0.74 1, '' 0.76 1, '' 0.78 1, '' 0.8200000000000001 1, '' 0.84 1, '' 0.86 1)
set label 'TEfficiencyTitle' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'efficiency' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.82975, graph 0.89893 to graph 0.9865, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Points' at graph 0.84019, graph 0.93696 left front font ',8.5'
set label '10' at graph 0.97606, graph 0.93696 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './efficiency.png'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './efficiency.svg'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
