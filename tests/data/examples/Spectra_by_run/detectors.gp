# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './detectors.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [80:200]
set xtics ('80' 80, '100' 100, '120' 120, '140' 140, '160' 160, '180' 180, '200' 200, '' 85 1, '' 90 1, '' 95 1, '' 105 1, '' 110 1, '' 115 1, '' 125 1, '' 130 1, '' 135 1, '' 145 1, '' 150 1, '' 155 1, '' 165 1, '' 170 1, '' 175 1, '' 185 1, '' 190 1, '' 195 1)
set yrange [0:206.65]
set ytics ('0' -0, '50' 50, '100' 100, '150' 150, '200' 200, '' 10 1, '' 20 1, '' 30 1, '' 40 1, '' 60 1, '' 70 1, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set label 'Signal of each detector' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'Signal [ADC counts]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Entries / (5 ADC counts)' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key at graph 0.9865, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',10'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './detectors.png'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' notitle, \
     data index 3 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     data index 4 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#009E73' notitle, \
     data index 5 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#009E73' notitle, \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'detector = A', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' title 'detector = B', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#009E73' title 'detector = C'
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './detectors.svg'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' notitle, \
     data index 3 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#D55E00' notitle, \
     data index 4 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#009E73' notitle, \
     data index 5 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#009E73' notitle, \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' title 'detector = A', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#D55E00' title 'detector = B', \
     keyentry with lines linewidth 3.5 dashtype 1 linecolor rgb '#009E73' title 'detector = C'
set output
