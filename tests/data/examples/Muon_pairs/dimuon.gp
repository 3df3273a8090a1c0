# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.096552
set rmargin at screen 0.96729
data = './dimuon.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [-0.6:2.4]
set xtics ('−0.5' -0.5, '0.0' 0, '0.5' 0.5, '1.0' 1, '1.5' 1.5, '2.0' 2, '' -0.6000000000000001 1, '' -0.4 1, '' -0.30000000000000004 1, '' -0.2 1, '' -0.1 1, '' 0.1 1, '' 0.2 1, '' 0.30000000000000004 1, '' 0.4 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1, '' 1.1 1, '' 1.2000000000000002 1, '' 1.3 1, '' 1.4000000000000001 1, '' 1.6 1, '' 1.7000000000000002 1, '' 1.8 1, '' 1.9000000000000001 1, '' 2.1 1, '' 2.2 1, '' 2.3000000000000003 1, '' 2.4000000000000004 1)
set yrange [0:67.409]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1, '' 62 1, '' 64 1, '' 66 1)
set label 'Muon pairs of opposite charge' at screen 0.096552, screen 0.942 left font ',12.6'
set label 'log10(mass [GeV])' at screen 0.96729, screen 0.036433 right font ',12'
set label 'Entries / bin' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.013369, graph 0.68158 to graph 0.27915, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.0237, graph 0.93696 left front font ',8.5'
set label '405' at graph 0.26882, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.0237, graph 0.88263 left front font ',8.5'
set label '1.1374' at graph 0.26882, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.0237, graph 0.82829 left front font ',8.5'
set label '0.71309' at graph 0.26882, graph 0.82829 right front font ',8.5'
set label 'Underflow' at graph 0.0237, graph 0.77395 left front font ',8.5'
set label '9' at graph 0.26882, graph 0.77395 right front font ',8.5'
set label 'Overflow' at graph 0.0237, graph 0.71961 left front font ',8.5'
set label '1' at graph 0.26882, graph 0.71961 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './dimuon.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './dimuon.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
