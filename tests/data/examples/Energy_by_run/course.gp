# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10978
set rmargin at screen 0.97188
data = './course.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [100.5:112.5]
set xtics ('102' 102, '104' 104, '106' 106, '108' 108, '110' 110, '112' 112, '' 100.5 1, '' 101 1, '' 101.5 1, '' 102.5 1, '' 103 1, '' 103.5 1, '' 104.5 1, '' 105 1, '' 105.5 1, '' 106.5 1, '' 107 1, '' 107.5 1, '' 108.5 1, '' 109 1, '' 109.5 1, '' 110.5 1, '' 111 1, '' 111.5 1, '' 112.5 1)
set yrange [121.73446759999999:141.89]
set ytics ('125' 125, '130' 130, '135' 135, '140' 140, '' 122 1, '' 123 1, '' 124 1, '' 126 1, '' 127 1, '' 128 1, '' 129 1, '' 131 1, '' 132 1, '' 133 1, '' 134 1, '' 136 1, '' 137 1, '' 138 1, '' 139 1, '' 141 1)
set label 'Mean signal of each run' at screen 0.10978, screen 0.942 left font ',12.6'
set label 'Run' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Mean signal (ADC counts)' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.7616, graph 0.79025 to graph 0.9865, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.77204, graph 0.93696 left front font ',8.5'
set label '12' at graph 0.97606, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.77204, graph 0.88263 left front font ',8.5'
set label '106.5' at graph 0.97606, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.77204, graph 0.82829 left front font ',8.5'
set label '3.4521' at graph 0.97606, graph 0.82829 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './course.png'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './course.svg'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
