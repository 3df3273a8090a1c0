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
set xrange [0:12]
set logscale y
set yrange [1.5:990.36]
set ytics ('' 2e0 1, '' 3e0 1, '' 4e0 1, '' 5e0 1, '' 6e0 1, '' 7e0 1, '' 8e0 1, '' 9e0 1, '10' 1e1 0, '' 2e1 1, '' 3e1 1, '' 4e1 1, '' 5e1 1, '' 6e1 1, '' 7e1 1, '' 8e1 1, '' 9e1 1, '100' 1e2 0, '' 2e2 1, '' 3e2 1, '' 4e2 1, '' 5e2 1, '' 6e2 1, '' 7e2 1, '' 8e2 1, '' 9e2 1)
set title 'Decay times' font 'DejaVu Sans,34'
set xlabel 'time [µs]' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'Entries / (0.3 µs)' font 'DejaVu Sans,32' offset -1.2,0
set object 1 rectangle from graph 0.7834, graph 0.771 to graph 0.985, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.7954, graph 0.942 left front font 'DejaVu Sans,22'
set label '4966' at graph 0.973, graph 0.942 right front font 'DejaVu Sans,22'
set label 'Mean' at graph 0.7954, graph 0.896 left front font 'DejaVu Sans,22'
set label '2.2137' at graph 0.973, graph 0.896 right front font 'DejaVu Sans,22'
set label 'RMS' at graph 0.7954, graph 0.85 left front font 'DejaVu Sans,22'
set label '2.092' at graph 0.973, graph 0.85 right front font 'DejaVu Sans,22'
set label 'Overflow' at graph 0.7954, graph 0.804 left front font 'DejaVu Sans,22'
set label '34' at graph 0.973, graph 0.804 right front font 'DejaVu Sans,22'
data = './times.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './times.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './times.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal pdfcairo noenhanced size 16in,10in fontscale 0.74 font 'DejaVu Sans,26' rounded linewidth 1.7 background rgb 'white'
marks = 1.8
set output './times.pdf'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
