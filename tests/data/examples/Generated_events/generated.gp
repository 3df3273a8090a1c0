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
set xrange [75:105]
set yrange [0:100.08]
set title 'Two muons' font 'DejaVu Sans,34'
set xlabel 'mass [GeV]' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'Sum of weights / GeV' font 'DejaVu Sans,32' offset -1.2,0
set object 1 rectangle from graph 0.7306, graph 0.725 to graph 0.985, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.7426, graph 0.942 left front font 'DejaVu Sans,22'
set label '375' at graph 0.973, graph 0.942 right front font 'DejaVu Sans,22'
set label 'Mean' at graph 0.7426, graph 0.896 left front font 'DejaVu Sans,22'
set label '91.114' at graph 0.973, graph 0.896 right front font 'DejaVu Sans,22'
set label 'RMS' at graph 0.7426, graph 0.85 left front font 'DejaVu Sans,22'
set label '3.308' at graph 0.973, graph 0.85 right front font 'DejaVu Sans,22'
set label 'Underflow' at graph 0.7426, graph 0.804 left front font 'DejaVu Sans,22'
set label '15.856' at graph 0.973, graph 0.804 right front font 'DejaVu Sans,22'
set label 'Overflow' at graph 0.7426, graph 0.758 left front font 'DejaVu Sans,22'
set label '12.926' at graph 0.973, graph 0.758 right front font 'DejaVu Sans,22'
data = './generated.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './generated.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './generated.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
