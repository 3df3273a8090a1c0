# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5
set errorbars small
set tics in scale 1.2,0.6
set mxtics
set mytics
set grid xtics ytics linetype 1 linewidth 1 linecolor rgb '#E4E4E4'
set lmargin 11.5
set rmargin 4
set bmargin 3.8
set tmargin 2.8
set key off
set xrange [1711926000:1714518000]
set yrange [1.9086931032644952:18.468]
set title 'Temperature in April' font 'DejaVu Sans,34'
set xlabel 'Zeit [s since 1970-01-01 UTC]' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel '' font 'DejaVu Sans,32' offset -1.2,0
set xlabel 'Zeit' font 'DejaVu Sans,32' offset 0,-0.2
set xtics format "%Y-%m-%d" timedate autofreq font 'DejaVu Sans,18'
data = './temperature.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './temperature.png'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './temperature.svg'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
