# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './resonance.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [60:120]
set xtics ('60' 60, '70' 70, '80' 80, '90' 90, '100' 100, '110' 110, '120' 120, '' 62 1, '' 64 1, '' 66 1, '' 68 1, '' 72 1, '' 74 1, '' 76 1, '' 78 1, '' 82 1, '' 84 1, '' 86 1, '' 88 1, '' 92 1, '' 94 1, '' 96 1, '' 98 1, '' 102 1, '' 104 1, '' 106 1, '' 108 1, '' 112 1, '' 114 1, '' 116 1, '' 118 1)
set yrange [0:526.56]
set ytics ('0' -0, '100' 100, '200' 200, '300' 300, '400' 400, '500' 500, '' 20 1, '' 40 1, '' 60 1, '' 80 1, '' 120 1, '' 140 1, '' 160 1, '' 180 1, '' 220 1, '' 240 1, '' 260 1, '' 280 1, '' 320 1, '' 340 1, '' 360 1, '' 380 1, '' 420 1, '' 440 1, '' 460 1, '' 480 1, '' 520 1)
set label 'Z boson in simulated events with two muons' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'm(µ⁺µ⁻) [GeV]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Entries / GeV' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.013503, graph 0.975 left top Left reverse samplen 2 spacing 1.12 font ',10'
set object 1 rectangle from graph 0.65256, graph 0.30122 to graph 0.9865, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.663, graph 0.93696 left front font ',8.5'
set label '2292' at graph 0.97606, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.663, graph 0.88263 left front font ',8.5'
set label '90.497' at graph 0.97606, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.663, graph 0.82829 left front font ',8.5'
set label '7.2508' at graph 0.97606, graph 0.82829 right front font ',8.5'
set label 'Underflow' at graph 0.663, graph 0.77395 left front font ',8.5'
set label '124' at graph 0.97606, graph 0.77395 right front font ',8.5'
set label 'Overflow' at graph 0.663, graph 0.71961 left front font ',8.5'
set label '118' at graph 0.97606, graph 0.71961 right front font ',8.5'
set label 'χ²/ndf' at graph 0.663, graph 0.66528 left front font ',8.5'
set label '64.686 / 55' at graph 0.97606, graph 0.66528 right front font ',8.5'
set label 'p-value' at graph 0.663, graph 0.61094 left front font ',8.5'
set label '0.17438' at graph 0.97606, graph 0.61094 right front font ',8.5'
set label 'amplitude' at graph 0.663, graph 0.5566 left front font ',8.5'
set label '425 ± 16' at graph 0.97606, graph 0.5566 right front font ',8.5'
set label 'mean' at graph 0.663, graph 0.50227 left front font ',8.5'
set label '91.24 ± 0.05' at graph 0.97606, graph 0.50227 right front font ',8.5'
set label 'gamma' at graph 0.663, graph 0.44793 left front font ',8.5'
set label '3.28 ± 0.12' at graph 0.97606, graph 0.44793 right front font ',8.5'
set label 'n' at graph 0.663, graph 0.39359 left front font ',8.5'
set label '24 ± 14' at graph 0.97606, graph 0.39359 right front font ',8.5'
set label 'slope' at graph 0.663, graph 0.33925 left front font ',8.5'
set label '41 ± 13' at graph 0.97606, graph 0.33925 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './resonance.png'
plot data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Dimuon candidates', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Breit-Wigner + exponential'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './resonance.svg'
plot data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Dimuon candidates', \
     keyentry with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Breit-Wigner + exponential'
set output
