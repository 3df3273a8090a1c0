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
set xrange [-3.6363636363636362:94.54545454545455]
set yrange [0.14753723886278203:0.86807]
set title 'TEfficiencyTitle' font 'DejaVu Sans,34'
set xlabel '' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'efficiency' font 'DejaVu Sans,32' offset -1.2,0
set object 1 rectangle from graph 0.785, graph 0.909 to graph 0.985, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Points' at graph 0.797, graph 0.942 left front font 'DejaVu Sans,22'
set label '10' at graph 0.973, graph 0.942 right front font 'DejaVu Sans,22'
data = './efficiency.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './efficiency.png'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './efficiency.svg'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
