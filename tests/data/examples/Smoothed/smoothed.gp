# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './smoothed.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [0:100]
set xtics ('0' -0, '20' 20, '40' 40, '60' 60, '80' 80, '100' 100, '' 5 1, '' 10 1, '' 15 1, '' 25 1, '' 30 1, '' 35 1, '' 45 1, '' 50 1, '' 55 1, '' 65 1, '' 70 1, '' 75 1, '' 85 1, '' 90 1, '' 95 1)
set yrange [0:374.91]
set ytics ('0' -0, '50' 50, '100' 100, '150' 150, '200' 200, '250' 250, '300' 300, '350' 350, '' 10 1, '' 20 1, '' 30 1, '' 40 1, '' 60 1, '' 70 1, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1, '' 210 1, '' 220 1, '' 230 1, '' 240 1, '' 260 1, '' 270 1, '' 280 1, '' 290 1, '' 310 1, '' 320 1, '' 330 1, '' 340 1, '' 360 1, '' 370 1)
set label 'A peak, smoothed' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'energy [keV]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Sum of weights / bin' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.9865, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',10'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './smoothed.png'
plot data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 4 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' notitle, \
     data index 6 using 1:2 with lines linewidth 6.3 dashtype 1 linecolor rgb '#009E73' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Counts', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'Average of 9 bins', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' title 'Gaussian kernel', \
     keyentry with lines linewidth 6.3 dashtype 1 linecolor rgb '#009E73' title 'Savitzky-Golay'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './smoothed.svg'
plot data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 4 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' notitle, \
     data index 6 using 1:2 with lines linewidth 6.3 dashtype 1 linecolor rgb '#009E73' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Counts', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'Average of 9 bins', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' title 'Gaussian kernel', \
     keyentry with lines linewidth 6.3 dashtype 1 linecolor rgb '#009E73' title 'Savitzky-Golay'
set output
