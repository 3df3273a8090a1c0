# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.10555
set rmargin at screen 0.97188
data = './signals.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [-5:245]
set xtics ('0' -0, '50' 50, '100' 100, '150' 150, '200' 200, '' 10 1, '' 20 1, '' 30 1, '' 40 1, '' 60 1, '' 70 1, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1, '' 210 1, '' 220 1, '' 230 1, '' 240 1)
set logscale y
set yrange [0.5:21123]
set ytics ('' 0.5 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1, '10^{0}' 1, '' 2 1, '' 3 1, '' 4 1, '' 5 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '10^{1}' 10, '' 20 1, '' 30 1, '' 40 1, '' 50 1, '' 60 1, '' 70 1, '' 80 1, '' 90 1, '10^{2}' 100, '' 200 1, '' 300 1, '' 400 1, '' 500 1, '' 600 1, '' 700 1, '' 800 1, '' 900 1, '10^{3}' 1000, '' 2000 1, '' 3000 1, '' 4000 1, '' 5000 1, '' 6000 1, '' 7000 1, '' 8000 1, '' 9000 1, '10^{4}' 10000, '' 20000 1)
set label 'Signals' at screen 0.10555, screen 0.942 left font ',12.6'
set label 'signal [GeV]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Entries / (5 GeV)' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.76167, graph 0.79025 to graph 0.98656, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.77205, graph 0.93696 left front font ',8.5'
set label '40000' at graph 0.97618, graph 0.93696 right front font ',8.5'
set label 'Mean' at graph 0.77205, graph 0.88263 left front font ',8.5'
set label '18.164' at graph 0.97618, graph 0.88263 right front font ',8.5'
set label 'RMS' at graph 0.77205, graph 0.82829 left front font ',8.5'
set label '18.115' at graph 0.97618, graph 0.82829 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './signals.png'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './signals.svg'
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
set output
