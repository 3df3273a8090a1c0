# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2
set tics in scale 1.2,0.6
set mxtics
set mytics
set grid xtics ytics linetype 1 linewidth 1 linecolor rgb '#E0E0E0'
set lmargin 11
set rmargin 3.5
set bmargin 3.5
set key noenhanced top left Left reverse samplen 2
set logscale y
set xrange [-5:245]
set yrange [0.5:154940]
set title 'Signals' font 'DejaVu Sans,30'
set xlabel 'signal [GeV]' offset 0,0.2
set ylabel 'Entries / (5 GeV)' offset -0.2,0
set object 1 rectangle from graph 0.72, 0.7999999999999999 to graph 0.98, 0.97 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.735, 0.935 left front
set label '40000' at graph 0.967, 0.935 right front
set label 'Mean' at graph 0.735, 0.885 left front
set label '18.164' at graph 0.967, 0.885 right front
set label 'RMS' at graph 0.735, 0.835 left front
set label '18.115' at graph 0.967, 0.835 right front
data = './signals.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,24' rounded
set output './signals.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2 linecolor rgb '#0072B2' notitle
set output
set terminal svg noenhanced size 1600,1000 font 'DejaVu Sans,24' rounded background rgb 'white'
set output './signals.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2 linecolor rgb '#0072B2' notitle
set output
