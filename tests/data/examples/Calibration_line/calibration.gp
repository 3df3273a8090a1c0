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
set key noenhanced top left Left reverse samplen 2 spacing 1.15 font 'DejaVu Sans,26'
set xrange [34.96973599999998:3028.966364]
set yrange [-82.01447558954231:2065.3]
set title 'Calibration of a germanium detector' font 'DejaVu Sans,34'
set xlabel 'channel' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'energy [keV]' font 'DejaVu Sans,32' offset -1.2,0
set object 1 rectangle from graph 0.6514, graph 0.725 to graph 0.985, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Points' at graph 0.6634, graph 0.942 left front font 'DejaVu Sans,22'
set label '12' at graph 0.973, graph 0.942 right front font 'DejaVu Sans,22'
set label 'χ²/ndf' at graph 0.6634, graph 0.896 left front font 'DejaVu Sans,22'
set label '11.141 / 10' at graph 0.973, graph 0.896 right front font 'DejaVu Sans,22'
set label 'p-value' at graph 0.6634, graph 0.85 left front font 'DejaVu Sans,22'
set label '0.34662' at graph 0.973, graph 0.85 right front font 'DejaVu Sans,22'
set label 'offset' at graph 0.6634, graph 0.804 left front font 'DejaVu Sans,22'
set label '-11.54 ± 0.30' at graph 0.973, graph 0.804 right front font 'DejaVu Sans,22'
set label 'gain' at graph 0.6634, graph 0.758 left front font 'DejaVu Sans,22'
set label '0.48716 ± 0.00025' at graph 0.973, graph 0.758 right front font 'DejaVu Sans,22'
data = './calibration.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './calibration.png'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Known gamma lines', \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'offset + gain · channel'
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './calibration.svg'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Known gamma lines', \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'offset + gain · channel'
set output
