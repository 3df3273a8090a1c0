# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.096552
set rmargin at screen 0.9276
data = './temperature.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [1711926000:1714518000]
set xtics ('2024-04-01' 1711929600, '2024-04-11' 1712793600, '2024-04-21' 1713657600, '' 1711929600 1, '' 1712016000 1, '' 1712102400 1, '' 1712188800 1, '' 1712275200 1, '' 1712361600 1, '' 1712448000 1, '' 1712534400 1, '' 1712620800 1, '' 1712707200 1, '' 1712793600 1, '' 1712880000 1, '' 1712966400 1, '' 1713052800 1, '' 1713139200 1, '' 1713225600 1, '' 1713312000 1, '' 1713398400 1, '' 1713484800 1, '' 1713571200 1, '' 1713657600 1, '' 1713744000 1, '' 1713830400 1, '' 1713916800 1, '' 1714003200 1, '' 1714089600 1, '' 1714176000 1, '' 1714262400 1, '' 1714348800 1, '' 1714435200 1)
set yrange [1.9086931032644952:18.468]
set ytics ('5' 5, '10' 10, '15' 15, '' 2 1, '' 3 1, '' 4 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '' 11 1, '' 12 1, '' 13 1, '' 14 1, '' 16 1, '' 17 1, '' 18 1)
set label 'Temperature in April' at screen 0.096552, screen 0.942 left font ',12.6'
set label 'Zeit (UTC)' at screen 0.9276, screen 0.036433 right font ',12'
set key off
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './temperature.png'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './temperature.svg'
plot data index 0 using 3:2:($4-$3):(0) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
