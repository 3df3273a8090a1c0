# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
data = './runs.dat'
set terminal pngcairo enhanced size 1600,1000 fontscale 2.6458 font 'DejaVu Sans,4.5' rounded linewidth 0.45 dashlength 0.6
marks = 0.99
set output './runs.png'
set multiplot
unset label
unset arrow
unset object
set label 'Signal of each run' at screen 0.044648, screen 0.942 left font ',12.6'
set label 'Signal [ADC counts]' at screen 0.9875, screen 0.03429 right font ',12'
set label 'Entries / (5 ADC counts)' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.072023
set rmargin at screen 0.26518
set bmargin at screen 0.65696
set tmargin at screen 0.855
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:53.522]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1)
set label 'run = 101' at screen 0.072023, screen 0.8739 left font ',5.67'
set key off
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.30774
set rmargin at screen 0.50089
set bmargin at screen 0.65696
set tmargin at screen 0.855
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:51.195]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1)
set label 'run = 102' at screen 0.30774, screen 0.8739 left font ',5.67'
set key off
plot data index 2 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 3 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.54345
set rmargin at screen 0.73661
set bmargin at screen 0.65696
set tmargin at screen 0.855
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:50.031]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1)
set label 'run = 103' at screen 0.54345, screen 0.8739 left font ',5.67'
set key off
plot data index 4 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 4 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 5 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.77916
set rmargin at screen 0.97232
set bmargin at screen 0.65696
set tmargin at screen 0.855
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:54.684]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1)
set label 'run = 104' at screen 0.77916, screen 0.8739 left font ',5.67'
set key off
plot data index 6 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 6 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 7 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.072023
set rmargin at screen 0.26518
set bmargin at screen 0.37791
set tmargin at screen 0.57596
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:51.195]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1)
set label 'run = 105' at screen 0.072023, screen 0.59486 left font ',5.67'
set key off
plot data index 8 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 8 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 9 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.30774
set rmargin at screen 0.50089
set bmargin at screen 0.37791
set tmargin at screen 0.57596
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:61.637]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1)
set label 'run = 106' at screen 0.30774, screen 0.59486 left font ',5.67'
set key off
plot data index 10 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 10 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 11 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.54345
set rmargin at screen 0.73661
set bmargin at screen 0.37791
set tmargin at screen 0.57596
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:61.637]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1)
set label 'run = 107' at screen 0.54345, screen 0.59486 left font ',5.67'
set key off
plot data index 12 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 12 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 13 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.77916
set rmargin at screen 0.97232
set bmargin at screen 0.37791
set tmargin at screen 0.57596
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:50.031]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1)
set label 'run = 108' at screen 0.77916, screen 0.59486 left font ',5.67'
set key off
plot data index 14 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 14 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 15 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.072023
set rmargin at screen 0.26518
set bmargin at screen 0.098865
set tmargin at screen 0.29691
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:70.865]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '70' 70, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1, '' 62 1, '' 64 1, '' 66 1, '' 68 1)
set label 'run = 109' at screen 0.072023, screen 0.31581 left font ',5.67'
set key off
plot data index 16 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 16 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 17 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.30774
set rmargin at screen 0.50089
set bmargin at screen 0.098865
set tmargin at screen 0.29691
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:59.322]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1)
set label 'run = 110' at screen 0.30774, screen 0.31581 left font ',5.67'
set key off
plot data index 18 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 18 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 19 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.54345
set rmargin at screen 0.73661
set bmargin at screen 0.098865
set tmargin at screen 0.29691
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:62.793]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1, '' 62 1)
set label 'run = 111' at screen 0.54345, screen 0.31581 left font ',5.67'
set key off
plot data index 20 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 20 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 21 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.77916
set rmargin at screen 0.97232
set bmargin at screen 0.098865
set tmargin at screen 0.29691
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:54.684]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1)
set label 'run = 112' at screen 0.77916, screen 0.31581 left font ',5.67'
set key off
plot data index 22 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 22 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 23 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset multiplot
unset label
unset arrow
unset object
set output
set terminal svg enhanced size 605,378 fontscale 1.3333 font 'DejaVu Sans,4.5' rounded linewidth 0.1701 background rgb 'white'
marks = 0.297
set output './runs.svg'
set multiplot
unset label
unset arrow
unset object
set label 'Signal of each run' at screen 0.044648, screen 0.942 left font ',12.6'
set label 'Signal [ADC counts]' at screen 0.9875, screen 0.03429 right font ',12'
set label 'Entries / (5 ADC counts)' at screen 0.022146, screen 0.9 right rotate by 90 font ',12'
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.072023
set rmargin at screen 0.26518
set bmargin at screen 0.65696
set tmargin at screen 0.855
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:53.522]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1)
set label 'run = 101' at screen 0.072023, screen 0.8739 left font ',5.67'
set key off
plot data index 0 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 0 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 1 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.30774
set rmargin at screen 0.50089
set bmargin at screen 0.65696
set tmargin at screen 0.855
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:51.195]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1)
set label 'run = 102' at screen 0.30774, screen 0.8739 left font ',5.67'
set key off
plot data index 2 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 2 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 3 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.54345
set rmargin at screen 0.73661
set bmargin at screen 0.65696
set tmargin at screen 0.855
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:50.031]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1)
set label 'run = 103' at screen 0.54345, screen 0.8739 left font ',5.67'
set key off
plot data index 4 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 4 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 5 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.77916
set rmargin at screen 0.97232
set bmargin at screen 0.65696
set tmargin at screen 0.855
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:54.684]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1)
set label 'run = 104' at screen 0.77916, screen 0.8739 left font ',5.67'
set key off
plot data index 6 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 6 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 7 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.072023
set rmargin at screen 0.26518
set bmargin at screen 0.37791
set tmargin at screen 0.57596
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:51.195]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1)
set label 'run = 105' at screen 0.072023, screen 0.59486 left font ',5.67'
set key off
plot data index 8 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 8 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 9 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.30774
set rmargin at screen 0.50089
set bmargin at screen 0.37791
set tmargin at screen 0.57596
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:61.637]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1)
set label 'run = 106' at screen 0.30774, screen 0.59486 left font ',5.67'
set key off
plot data index 10 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 10 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 11 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.54345
set rmargin at screen 0.73661
set bmargin at screen 0.37791
set tmargin at screen 0.57596
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:61.637]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1)
set label 'run = 107' at screen 0.54345, screen 0.59486 left font ',5.67'
set key off
plot data index 12 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 12 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 13 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.77916
set rmargin at screen 0.97232
set bmargin at screen 0.37791
set tmargin at screen 0.57596
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:50.031]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1)
set label 'run = 108' at screen 0.77916, screen 0.59486 left font ',5.67'
set key off
plot data index 14 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 14 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 15 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.072023
set rmargin at screen 0.26518
set bmargin at screen 0.098865
set tmargin at screen 0.29691
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:70.865]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '70' 70, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1, '' 62 1, '' 64 1, '' 66 1, '' 68 1)
set label 'run = 109' at screen 0.072023, screen 0.31581 left font ',5.67'
set key off
plot data index 16 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 16 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 17 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.30774
set rmargin at screen 0.50089
set bmargin at screen 0.098865
set tmargin at screen 0.29691
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:59.322]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1)
set label 'run = 110' at screen 0.30774, screen 0.31581 left font ',5.67'
set key off
plot data index 18 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 18 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 19 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.54345
set rmargin at screen 0.73661
set bmargin at screen 0.098865
set tmargin at screen 0.29691
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:62.793]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '60' 60, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1, '' 56 1, '' 58 1, '' 62 1)
set label 'run = 111' at screen 0.54345, screen 0.31581 left font ',5.67'
set key off
plot data index 20 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 20 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 21 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset label
unset arrow
unset object
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.77916
set rmargin at screen 0.97232
set bmargin at screen 0.098865
set tmargin at screen 0.29691
set xrange [80:200]
set xtics ('100' 100, '150' 150, '200' 200, '' 80 1, '' 90 1, '' 110 1, '' 120 1, '' 130 1, '' 140 1, '' 160 1, '' 170 1, '' 180 1, '' 190 1)
set yrange [0:54.684]
set ytics ('0' -0, '10' 10, '20' 20, '30' 30, '40' 40, '50' 50, '' 2 1, '' 4 1, '' 6 1, '' 8 1, '' 12 1, '' 14 1, '' 16 1, '' 18 1, '' 22 1, '' 24 1, '' 26 1, '' 28 1, '' 32 1, '' 34 1, '' 36 1, '' 38 1, '' 42 1, '' 44 1, '' 46 1, '' 48 1, '' 52 1, '' 54 1)
set label 'run = 112' at screen 0.77916, screen 0.31581 left font ',5.67'
set key off
plot data index 22 using 1:2 with filledcurves closed fillcolor rgb '#0072B2' fillstyle transparent solid 0.18 noborder notitle, \
     data index 22 using 1:2 with lines linewidth 3.5 dashtype 1 linecolor rgb '#0072B2' notitle, \
     data index 23 using 1:3:(0):($4-$3) with vectors nohead linewidth 2.5 linecolor rgb '#0072B2' notitle
unset multiplot
unset label
unset arrow
unset object
set output
