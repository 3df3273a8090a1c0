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
set xrange [1.7599999999999998:62.24]
set yrange [0:1.5]
set title 'Efficiency of a muon trigger' font 'DejaVu Sans,34'
set xlabel 'transverse momentum [GeV]' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'efficiency' font 'DejaVu Sans,32' offset -1.2,0
set object 1 rectangle from graph 0.6514, graph 0.679 to graph 0.985, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Points' at graph 0.6634, graph 0.942 left front font 'DejaVu Sans,22'
set label '14' at graph 0.973, graph 0.942 right front font 'DejaVu Sans,22'
set label 'χ²/ndf' at graph 0.6634, graph 0.896 left front font 'DejaVu Sans,22'
set label '11.383 / 11' at graph 0.973, graph 0.896 right front font 'DejaVu Sans,22'
set label 'p-value' at graph 0.6634, graph 0.85 left front font 'DejaVu Sans,22'
set label '0.4118' at graph 0.973, graph 0.85 right front font 'DejaVu Sans,22'
set label 'plateau' at graph 0.6634, graph 0.804 left front font 'DejaVu Sans,22'
set label '0.942 ± 0.007' at graph 0.973, graph 0.804 right front font 'DejaVu Sans,22'
set label 'threshold' at graph 0.6634, graph 0.758 left front font 'DejaVu Sans,22'
set label '19.75 ± 0.19' at graph 0.973, graph 0.758 right front font 'DejaVu Sans,22'
set label 'width' at graph 0.6634, graph 0.712 left front font 'DejaVu Sans,22'
set label '3.83 ± 0.16' at graph 0.973, graph 0.712 right front font 'DejaVu Sans,22'
data = './efficiency.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './efficiency.png'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Passed', \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Turn-on curve'
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './efficiency.svg'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Passed', \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'Turn-on curve'
set output
