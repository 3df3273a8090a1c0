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
set key noenhanced top right samplen 2
set xrange [-0.5:3.5]
set yrange [0:2222.5]
set title 'Cuts' font 'DejaVu Sans,30'
set xlabel 'number of cuts' offset 0,0.2
set ylabel 'Rows left' offset -0.2,0
data = './cuts.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,24' rounded
set output './cuts.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2 linecolor rgb '#0072B2' notitle
set output
set terminal svg noenhanced size 1600,1000 font 'DejaVu Sans,24' rounded background rgb 'white'
set output './cuts.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2 linecolor rgb '#0072B2' notitle
set output
