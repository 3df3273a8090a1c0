# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.12301
set rmargin at screen 0.97188
data = './mass.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [80.2:101.8]
set xtics ('85' 85, '90' 90, '95' 95, '100' 100, '' 81 1, '' 82 1, '' 83 1, '' 84 1, '' 86 1, '' 87 1, '' 88 1, '' 89 1, '' 91 1, '' 92 1, '' 93 1, '' 94 1, '' 96 1, '' 97 1, '' 98 1, '' 99 1, '' 101 1)
set yrange [0:1047.2]
set ytics ('0' -0, '200' 200, '400' 400, '600' 600, '800' 800, '1000' 1000, '' 50 1, '' 100 1, '' 150 1, '' 250 1, '' 300 1, '' 350 1, '' 450 1, '' 500 1, '' 550 1, '' 650 1, '' 700 1, '' 750 1, '' 850 1, '' 900 1, '' 950 1)
set label 'Mass of two muons' at screen 0.12301, screen 0.942 left font ',12.6'
set label 'mass (GeV)' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Entries / bin' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.98629, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',10'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './mass.png'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 2 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     data index 2 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     data index 2 using 1:2 with points pointtype 5 pointsize marks linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'generated', \
     keyentry with yerrorbars pointtype 5 pointsize marks linewidth 2.5 linecolor rgb '#D55E00' title 'measured'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './mass.svg'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 2 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     data index 2 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     data index 2 using 1:2 with points pointtype 5 pointsize marks linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'generated', \
     keyentry with yerrorbars pointtype 5 pointsize marks linewidth 2.5 linecolor rgb '#D55E00' title 'measured'
set output
