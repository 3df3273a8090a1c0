# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.12301
set rmargin at screen 0.97188
data = './spectrum.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [-0.02:0.52]
set xtics ('0.0' -0, '0.1' 0.1, '0.2' 0.2, '0.3' 0.3, '0.4' 0.4, '0.5' 0.5, '' -0.02 1, '' 0.02 1, '' 0.04 1, '' 0.06 1, '' 0.08 1, '' 0.12 1, '' 0.14 1, '' 0.16 1, '' 0.18 1, '' 0.22 1, '' 0.24 1, '' 0.26 1, '' 0.28 1, '' 0.32 1, '' 0.34 1, '' 0.36 1, '' 0.38 1, '' 0.42 1, '' 0.44 1, '' 0.46 1, '' 0.48 1, '' 0.52 1)
set logscale y
set yrange [0.0030622128373942476:572.9]
set ytics ('' 0.004 1, '' 0.005 1, '' 0.006 1, '' 0.007 1, '' 0.008 1, '' 0.009000000000000001 1, '0.01' 0.01, '' 0.02 1, '' 0.03 1, '' 0.04 1, '' 0.05 1, '' 0.06 1, '' 0.07 1, '' 0.08 1, '' 0.09 1, '0.1' 0.1, '' 0.2 1, '' 0.30000000000000004 1, '' 0.4 1, '' 0.5 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1, '1' 1, '' 2 1, '' 3 1, '' 4 1, '' 5 1, '' 6 1, '' 7 1, '' 8 1, '' 9 1, '10' 10, '' 20 1, '' 30 1, '' 40 1, '' 50 1, '' 60 1, '' 70 1, '' 80 1, '' 90 1, '100' 100, '' 200 1, '' 300 1, '' 400 1, '' 500 1)
set label 'Two vibrations in noise' at screen 0.12301, screen 0.942 left font ',12.6'
set label 'Frequency [Hz]' at screen 0.97188, screen 0.036433 right font ',12'
set label 'Power density [mV^{2}/Hz]' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set key off
set object 1 rectangle from graph 0.81591, graph 0.89893 to graph 0.98629, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Points' at graph 0.82651, graph 0.93696 left front font ',8.5'
set label '401' at graph 0.97569, graph 0.93696 right front font ',8.5'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './spectrum.png'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './spectrum.svg'
plot data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle
set output
