# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.96729
data = './peak.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0:1000]
set xtics ('0' -0, '200' 200, '400' 400, '600' 600, '800' 800, '1000' 1000, '' 50 1, '' 100 1, '' 150 1, '' 250 1, '' 300 1, '' 350 1, '' 450 1, '' 500 1, '' 550 1, '' 650 1, '' 700 1, '' 750 1, '' 850 1, '' 900 1, '' 950 1)
set yrange [0:413.46]
set ytics ('0' -0, '100' 100, '200' 200, '300' 300, '400' 400, '' 20 1, '' 40 1, '' 60 1, '' 80 1, '' 120 1, '' 140 1, '' 160 1, '' 180 1, '' 220 1, '' 240 1, '' 260 1, '' 280 1, '' 320 1, '' 340 1, '' 360 1, '' 380 1)
set label 'Energies of a source' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'energy [keV]' at screen 0.96729, screen 0.036433 right font ',12'
set label 'counts per 20 keV' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.98643, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',10'
set object 1 rectangle from graph 0.013575, graph 0.40989 to graph 0.42929, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.024066, graph 0.93696 left front font ',8.5'
set label '2924' at graph 0.4188, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.024066, graph 0.88263 left front font ',8.5'
set label '390.88' at graph 0.4188, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.024066, graph 0.82829 left front font ',8.5'
set label '268.56' at graph 0.4188, graph 0.82829 right front font ',8.5'
set label 'χ²/ndf' at graph 0.024066, graph 0.77395 left front font ',8.5'
set label '30.737 / 40' at graph 0.4188, graph 0.77395 right front font ',8.5'
set label 'p-value' at graph 0.024066, graph 0.71961 left front font ',8.5'
set label '0.85367' at graph 0.4188, graph 0.71961 right front font ',8.5'
set label 'amplitude' at graph 0.024066, graph 0.66528 left front font ',8.5'
set label '263 ± 11' at graph 0.4188, graph 0.66528 right front font ',8.5'
set label 'mean' at graph 0.024066, graph 0.61094 left front font ',8.5'
set label '663.6 ± 1.1' at graph 0.4188, graph 0.61094 right front font ',8.5'
set label 'sigma' at graph 0.024066, graph 0.5566 left front font ',8.5'
set label '30.0 ± 1.0' at graph 0.4188, graph 0.5566 right front font ',8.5'
set label 'norm' at graph 0.024066, graph 0.50227 left front font ',8.5'
set label '133 ± 7' at graph 0.4188, graph 0.50227 right front font ',8.5'
set label 'slope' at graph 0.024066, graph 0.44793 left front font ',8.5'
set label '−0.00343 ± 0.00015' at graph 0.4188, graph 0.44793 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './peak.png'
plot data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Energies of a source', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Peak on an exponential'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './peak.svg'
plot data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Energies of a source', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Peak on an exponential'
set output
