# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.096552
set rmargin at screen 0.96729
data = './energies.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [-1:1]
set xtics ('−1.0' -1, '−0.5' -0.5, '0.0' 0, '0.5' 0.5, '1.0' 1, '' -0.9 1, '' -0.8 1, '' -0.7000000000000001 1, '' -0.6000000000000001 1, '' -0.4 1, '' -0.30000000000000004 1, '' -0.2 1, '' -0.1 1, '' 0.1 1, '' 0.2 1, '' 0.30000000000000004 1, '' 0.4 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1)
set yrange [30.546333937773042:50.827]
set ytics ('35' 35, '40' 40, '45' 45, '50' 50, '' 31 1, '' 32 1, '' 33 1, '' 34 1, '' 36 1, '' 37 1, '' 38 1, '' 39 1, '' 41 1, '' 42 1, '' 43 1, '' 44 1, '' 46 1, '' 47 1, '' 48 1, '' 49 1)
set label 'Energy of scattered particles [MeV]' at screen 0.096552, screen 0.942 left font ',12.6'
set label 'cos θ' at screen 0.96729, screen 0.036433 right font ',12'
set label 'mean energy [MeV]' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.013369, graph 0.79025 to graph 0.27915, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.0237, graph 0.93696 left front font ',8.5'
set label '8000' at graph 0.26882, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.0237, graph 0.88263 left front font ',8.5'
set label '0.0010317' at graph 0.26882, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.0237, graph 0.82829 left front font ',8.5'
set label '0.63475' at graph 0.26882, graph 0.82829 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './energies.png'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './energies.svg'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
