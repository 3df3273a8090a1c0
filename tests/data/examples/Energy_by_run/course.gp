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
set xrange [100.5:112.5]
set yrange [121.73446759999999:141.89]
set title 'Mean signal of each run' font 'DejaVu Sans,34'
set xlabel 'Run' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'Mean signal (ADC counts)' font 'DejaVu Sans,32' offset -1.2,0
set object 1 rectangle from graph 0.785, graph 0.817 to graph 0.985, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.797, graph 0.942 left front font 'DejaVu Sans,22'
set label '12' at graph 0.973, graph 0.942 right front font 'DejaVu Sans,22'
set label 'Mean' at graph 0.797, graph 0.896 left front font 'DejaVu Sans,22'
set label '106.5' at graph 0.973, graph 0.896 right front font 'DejaVu Sans,22'
set label 'RMS' at graph 0.797, graph 0.85 left front font 'DejaVu Sans,22'
set label '3.4521' at graph 0.973, graph 0.85 right front font 'DejaVu Sans,22'
data = './course.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './course.png'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './course.svg'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
