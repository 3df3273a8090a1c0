# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './lifetime.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0.2:14.2]
set xtics ('2' 2, '4' 4, '6' 6, '8' 8, '10' 10, '12' 12, '14' 14, '' 0.5 1, '' 1 1, '' 1.5 1, '' 2.5 1, '' 3 1, '' 3.5 1, '' 4.5 1, '' 5 1, '' 5.5 1, '' 6.5 1, '' 7 1, '' 7.5 1, '' 8.5 1, '' 9 1, '' 9.5 1, '' 10.5 1, '' 11 1, '' 11.5 1, '' 12.5 1, '' 13 1, '' 13.5 1)
set logscale y
set yrange [1:848.66]
set ytics ('1' 1, '' 2 1, '' 3 1, '' 4 1, '' 5 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '10' 10, '' 20 1, '' 30 1, '' 40 1, '' 50 1, '' 60 1, '' 70 1, '' 80 1, '' 90 1, '100' 100, '' 200 1, '' 300 1, '' 400 1, '' 500 1, '' 600 1, '' 700 1, '' 800 1)
set label 'Lifetime of the muon' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'decay time [µs]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Entries / (0.2 µs)' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.013503, graph 0.025 left bottom Left reverse samplen 2 spacing 1.12 font ',10'
set object 1 rectangle from graph 0.67982, graph 0.46423 to graph 0.9865, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.69026, graph 0.93696 left front font ',8.5'
set label '5408' at graph 0.97606, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.69026, graph 0.88263 left front font ',8.5'
set label '2.6321' at graph 0.97606, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.69026, graph 0.82829 left front font ',8.5'
set label '2.4991' at graph 0.97606, graph 0.82829 right front font ',8.5'
set label 'Overflow' at graph 0.69026, graph 0.77395 left front font ',8.5'
set label '115' at graph 0.97606, graph 0.77395 right front font ',8.5'
set label 'χ²/ndf' at graph 0.69026, graph 0.71961 left front font ',8.5'
set label '72.953 / 67' at graph 0.97606, graph 0.71961 right front font ',8.5'
set label 'p-value' at graph 0.69026, graph 0.66528 left front font ',8.5'
set label '0.28876' at graph 0.97606, graph 0.66528 right front font ',8.5'
set label 'n' at graph 0.69026, graph 0.61094 left front font ',8.5'
set label '509 ± 12' at graph 0.97606, graph 0.61094 right front font ',8.5'
set label 'tau' at graph 0.69026, graph 0.5566 left front font ',8.5'
set label '2.21 ± 0.05' at graph 0.97606, graph 0.5566 right front font ',8.5'
set label 'flat' at graph 0.69026, graph 0.50227 left front font ',8.5'
set label '4.0 ± 0.6' at graph 0.97606, graph 0.50227 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './lifetime.png'
plot data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Stopped muons', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'N exp(-t/τ) + B'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './lifetime.svg'
plot data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Stopped muons', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'N exp(-t/τ) + B'
set output
