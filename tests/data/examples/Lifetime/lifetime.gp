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
set xrange [0.2:14.2]
set logscale y
set yrange [1:1682.9]
set ytics ('1' 1e0 0, '' 2e0 1, '' 3e0 1, '' 4e0 1, '' 5e0 1, '' 6e0 1, '' 7e0 1, '' 8e0 1, '' 9e0 1, '10' 1e1 0, '' 2e1 1, '' 3e1 1, '' 4e1 1, '' 5e1 1, '' 6e1 1, '' 7e1 1, '' 8e1 1, '' 9e1 1, '100' 1e2 0, '' 2e2 1, '' 3e2 1, '' 4e2 1, '' 5e2 1, '' 6e2 1, '' 7e2 1, '' 8e2 1, '' 9e2 1, '10³' 1e3 0)
set title 'Lifetime of the muon' font 'DejaVu Sans,34'
set xlabel 'decay time [µs]' font 'DejaVu Sans,32' offset 0,-0.2
set ylabel 'Entries / (0.2 µs)' font 'DejaVu Sans,32' offset -1.2,0
set object 1 rectangle from graph 0.7042, graph 0.541 to graph 0.985, graph 0.975 front fillcolor rgb 'white' fillstyle solid border linecolor rgb '#808080' linewidth 1.5
set label 'Entries' at graph 0.7162, graph 0.942 left front font 'DejaVu Sans,22'
set label '5408' at graph 0.973, graph 0.942 right front font 'DejaVu Sans,22'
set label 'Mean' at graph 0.7162, graph 0.896 left front font 'DejaVu Sans,22'
set label '2.6321' at graph 0.973, graph 0.896 right front font 'DejaVu Sans,22'
set label 'RMS' at graph 0.7162, graph 0.85 left front font 'DejaVu Sans,22'
set label '2.4991' at graph 0.973, graph 0.85 right front font 'DejaVu Sans,22'
set label 'Overflow' at graph 0.7162, graph 0.804 left front font 'DejaVu Sans,22'
set label '115' at graph 0.973, graph 0.804 right front font 'DejaVu Sans,22'
set label 'χ²/ndf' at graph 0.7162, graph 0.758 left front font 'DejaVu Sans,22'
set label '72.953 / 67' at graph 0.973, graph 0.758 right front font 'DejaVu Sans,22'
set label 'p-value' at graph 0.7162, graph 0.712 left front font 'DejaVu Sans,22'
set label '0.28876' at graph 0.973, graph 0.712 right front font 'DejaVu Sans,22'
set label 'n' at graph 0.7162, graph 0.666 left front font 'DejaVu Sans,22'
set label '509 ± 12' at graph 0.973, graph 0.666 right front font 'DejaVu Sans,22'
set label 'tau' at graph 0.7162, graph 0.62 left front font 'DejaVu Sans,22'
set label '2.21 ± 0.05' at graph 0.973, graph 0.62 right front font 'DejaVu Sans,22'
set label 'flat' at graph 0.7162, graph 0.574 left front font 'DejaVu Sans,22'
set label '4.0 ± 0.6' at graph 0.973, graph 0.574 right front font 'DejaVu Sans,22'
data = './lifetime.dat'
set terminal pngcairo noenhanced size 1600,1000 font 'DejaVu Sans,26' rounded
marks = 1.8
set output './lifetime.png'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Stopped muons', \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'N exp(-t/τ) + B'
set output
set terminal svg noenhanced size 1600,1000 fontscale 1.333 font 'DejaVu Sans,26' rounded background rgb 'white'
marks = 0.8
set output './lifetime.svg'
plot data index 0 using 1:2:3:4:5:6 with xyerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Stopped muons', \
     data index 2 using 1:2 with lines linewidth 5 dashtype 1 linecolor rgb '#0072B2' title 'N exp(-t/τ) + B'
set output
