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
set xrange [0:30]
set yrange [5.057447929082445:11.786]
set title 'Energy in each layer' font 'DejaVu Sans,34'
set xlabel 'depth (mm)' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'mean energy of a hit (MeV)' font 'DejaVu Sans,32' offset -1.2,0
data = './database.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './database.png'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './database.svg'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
