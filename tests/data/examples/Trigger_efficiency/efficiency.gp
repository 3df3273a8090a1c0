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
set xrange [1.7599999999999998:62.24]
set xtics ('10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1, '' 62 1)
set yrange [0:1.5]
set ytics ('0.0' -0, '0.2' 0.2, '0.4' 0.4, '0.6' 0.6, '0.8' 0.8, '1.0' 1, '1.2' 1.2, '1.4' 1.4, '' 0.05 1, '' 0.1 1, '' 0.15000000000000002 1, '' 0.25 1, '' 0.30000000000000004 1, '' 0.35000000000000003 1, '' 0.45 1, '' 0.5 1, '' 0.55 1, '' 0.65 1, '' 0.7000000000000001 1, '' 0.75 1, '' 0.8500000000000001 1, '' 0.9 1, '' 0.9500000000000001 1, '' 1.05 1, '' 1.1 1, '' 1.1500000000000001 1, '' 1.25 1, '' 1.3 1, '' 1.35 1, '' 1.4500000000000002 1, '' 1.5 1)
set label 'Efficiency of a muon trigger' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'transverse momentum [GeV]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'efficiency' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.9865, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',10'
set object 1 rectangle from graph 0.013503, graph 0.62724 to graph 0.36107, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Points' at graph 0.023938, graph 0.93696 left front font ',8.5'
set label '14' at graph 0.35063, graph 0.93696 right front font ',8.5'
set label 'χ²/ndf' at graph 0.023938, graph 0.88263 left front font ',8.5'
set label '11.383 / 11' at graph 0.35063, graph 0.88263 right front font ',8.5'
set label 'p-value' at graph 0.023938, graph 0.82829 left front font ',8.5'
set label '0.4118' at graph 0.35063, graph 0.82829 right front font ',8.5'
set label 'plateau' at graph 0.023938, graph 0.77395 left front font ',8.5'
set label '0.942 ± 0.007' at graph 0.35063, graph 0.77395 right front font ',8.5'
set label 'threshold' at graph 0.023938, graph 0.71961 left front font ',8.5'
set label '19.75 ± 0.19' at graph 0.35063, graph 0.71961 right front font ',8.5'
set label 'width' at graph 0.023938, graph 0.66528 left front font ',8.5'
set label '3.83 ± 0.16' at graph 0.35063, graph 0.66528 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './efficiency.png'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Passed', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Turn-on curve'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './efficiency.svg'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Passed', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Turn-on curve'
set output
