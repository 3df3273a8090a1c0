# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front out nomirror scale 0.7,0.35
set lmargin at screen 0.12301
set rmargin at screen 0.81761
data = './photons.dat'
set bmargin at screen 0.155
set tmargin at screen 0.9
set xrange [-1:1]
set xtics ('−1.0' -1, '−0.5' -0.5, '0.0' 0, '0.5' 0.5, '1.0' 1, '' -0.9 1, '' -0.8 1, '' -0.7000000000000001 1, '' -0.6000000000000001 1, '' -0.4 1, '' -0.30000000000000004 1, '' -0.2 1, '' -0.1 1, '' 0.1 1, '' 0.2 1, '' 0.30000000000000004 1, '' 0.4 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1)
set yrange [-1:1]
set ytics ('−1.0' -1, '−0.5' -0.5, '0.0' 0, '0.5' 0.5, '1.0' 1, '' -0.9 1, '' -0.8 1, '' -0.7000000000000001 1, '' -0.6000000000000001 1, '' -0.4 1, '' -0.30000000000000004 1, '' -0.2 1, '' -0.1 1, '' 0.1 1, '' 0.2 1, '' 0.30000000000000004 1, '' 0.4 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1)
set label 'Photons in each second' at screen 0.12301, screen 0.942 left font ',12.6'
set label 'x (deg)' at screen 0.81761, screen 0.036433 right font ',12'
set label 'y (deg)' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set label 'rate (1/s)' at screen 0.98035, screen 0.9 right rotate by 90 font ',12'
set key off
set palette defined (0 '#440154', 1 '#472D7B', 2 '#3B528B', 3 '#2C728E', 4 '#21918C', 5 '#28AE80', 6 '#5EC962', 7 '#ADDC30', 8 '#FDE725')
set colorbox user origin screen 0.83949, screen 0.155 size screen 0.028125, screen 0.745
set cbrange [0:0.0675942601958431]
set cbtics ('0.00' -0, '0.01' 0.01, '0.02' 0.02, '0.03' 0.03, '0.04' 0.04, '0.05' 0.05, '0.06' 0.06, '' 0.002 1, '' 0.004 1, '' 0.006 1, '' 0.008 1, '' 0.012 1, '' 0.014 1, '' 0.016 1, '' 0.018000000000000002 1, '' 0.022 1, '' 0.024 1, '' 0.026000000000000002 1, '' 0.028 1, '' 0.032 1, '' 0.034 1, '' 0.036000000000000004 1, '' 0.038 1, '' 0.042 1, '' 0.044 1, '' 0.046 1, '' 0.048 1, '' 0.052000000000000005 1, '' 0.054 1, '' 0.056 1, '' 0.058 1, '' 0.062 1, '' 0.064 1, '' 0.066 1)
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,10' rounded linewidth 1 dashlength 0.6
marks = 2.2
set output './photons.png'
plot data index 0 using 1:3:1:($2+0.001):3:($4+0.001):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,10' rounded linewidth 0.378 background rgb 'white'
marks = 0.66
set output './photons.svg'
plot data index 0 using 1:3:1:($2+0.001):3:($4+0.001):5 with boxxyerror fillcolor palette fillstyle solid 1 noborder notitle
set output
