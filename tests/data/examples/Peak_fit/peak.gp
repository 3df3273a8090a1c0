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
set xrange [0:1000]
set yrange [0:584.55]
set title 'Energies of a source' font 'DejaVu Sans,34'
set xlabel 'energy [keV]' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'counts per 20 keV' font 'DejaVu Sans,32' offset -1.2,0
set object 1 rectangle from graph 0.625, graph 0.495 to graph 0.985, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.637, graph 0.942 left front font 'DejaVu Sans,22'
set label '2924' at graph 0.973, graph 0.942 right front font 'DejaVu Sans,22'
set label 'Mean' at graph 0.637, graph 0.896 left front font 'DejaVu Sans,22'
set label '390.88' at graph 0.973, graph 0.896 right front font 'DejaVu Sans,22'
set label 'RMS' at graph 0.637, graph 0.85 left front font 'DejaVu Sans,22'
set label '268.56' at graph 0.973, graph 0.85 right front font 'DejaVu Sans,22'
set label 'χ²/ndf' at graph 0.637, graph 0.804 left front font 'DejaVu Sans,22'
set label '30.737 / 40' at graph 0.973, graph 0.804 right front font 'DejaVu Sans,22'
set label 'p-value' at graph 0.637, graph 0.758 left front font 'DejaVu Sans,22'
set label '0.85367' at graph 0.973, graph 0.758 right front font 'DejaVu Sans,22'
set label 'amplitude' at graph 0.637, graph 0.712 left front font 'DejaVu Sans,22'
set label '263 ± 11' at graph 0.973, graph 0.712 right front font 'DejaVu Sans,22'
set label 'mean' at graph 0.637, graph 0.666 left front font 'DejaVu Sans,22'
set label '663.6 ± 1.1' at graph 0.973, graph 0.666 right front font 'DejaVu Sans,22'
set label 'sigma' at graph 0.637, graph 0.62 left front font 'DejaVu Sans,22'
set label '30.0 ± 1.0' at graph 0.973, graph 0.62 right front font 'DejaVu Sans,22'
set label 'norm' at graph 0.637, graph 0.574 left front font 'DejaVu Sans,22'
set label '133 ± 7' at graph 0.973, graph 0.574 right front font 'DejaVu Sans,22'
set label 'slope' at graph 0.637, graph 0.528 left front font 'DejaVu Sans,22'
set label '-0.00343 ± 0.00015' at graph 0.973, graph 0.528 right front font 'DejaVu Sans,22'
data = './peak.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './peak.png'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Energies of a source', \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Peak on an exponential'
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './peak.svg'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Energies of a source', \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Peak on an exponential'
set output
