# Draws the picture again: run gnuplot on this file in its folder.
reset
set encoding utf8
set border 31 linewidth 2.5 front
set errorbars small
set boxwidth 1
set tics front in scale 1,0.5
set lmargin at screen 0.12026
set rmargin at screen 0.96919
data = './mass.dat'
set terminal pngcairo enhanced size 1600,1200 fontscale 2.6458 font 'DejaVu Sans,10.95' rounded linewidth 1.095 dashlength 0.6
marks = 2.41
set output './mass.png'
set multiplot
set bmargin at screen 0.3774
set tmargin at screen 0.95436
set xrange [60:120]
set xtics ('' 60, '' 70, '' 80, '' 90, '' 100, '' 110, '' 120, '' 62 1, '' 64 1, '' 66 1, '' 68 1, '' 72 1, '' 74 1, '' 76 1, '' 78 1, '' 82 1, '' 84 1, '' 86 1, '' 88 1, '' 92 1, '' 94 1, '' 96 1, '' 98 1, '' 102 1, '' 104 1, '' 106 1, '' 108 1, '' 112 1, '' 114 1, '' 116 1, '' 118 1)
set yrange [0:520.55]
set ytics ('0' -0, '100' 100, '200' 200, '300' 300, '400' 400, '500' 500, '' 20 1, '' 40 1, '' 60 1, '' 80 1, '' 120 1, '' 140 1, '' 160 1, '' 180 1, '' 220 1, '' 240 1, '' 260 1, '' 280 1, '' 320 1, '' 340 1, '' 360 1, '' 380 1, '' 420 1, '' 440 1, '' 460 1, '' 480 1, '' 520 1)
set label 'm_{μμ} [GeV]' at screen 0.96919, screen 0.03286 right font ',13.1'
set label 'Events / (2 GeV)' at screen 0.024259, screen 0.95436 right rotate by 90 font ',13.1'
set key at graph 0.98726, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',11'
set label 'Simulation and pseudo-data' at graph 0.021278, graph 0.93732 left front font ',11'
set label '√s = 13 TeV, 0.8 fb^{−1}' at graph 0.021278, graph 0.84197 left front font ',11'
plot data index 4 using 1:2 with filledcurves closed fillcolor rgb '#56B4E9' fillstyle solid 1 noborder notitle, \
     data index 4 using 1:2 with lines linewidth 1.2 linecolor rgb '#303030' notitle, \
     data index 2 using 1:2 with filledcurves closed fillcolor rgb '#E69F00' fillstyle solid 1 noborder notitle, \
     data index 2 using 1:2 with lines linewidth 1.2 linecolor rgb '#303030' notitle, \
     data index 6 using 1:2:3 with filledcurves fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Data', \
     keyentry with boxes fillcolor rgb '#56B4E9' fillstyle solid 1 border linecolor rgb '#303030' linewidth 1.2 title 'Z → μμ', \
     keyentry with boxes fillcolor rgb '#E69F00' fillstyle solid 1 border linecolor rgb '#303030' linewidth 1.2 title 'tt̄', \
     keyentry with boxes fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder title 'Statistical error'
unset label
unset arrow
unset object
unset logscale y
set key off
set bmargin at screen 0.14149
set tmargin at screen 0.36097
set label 'Ratio' at screen 0.024259, screen 0.25123 center rotate by 90 font ',13.15'
set xrange [60:120]
set xtics ('60' 60, '70' 70, '80' 80, '90' 90, '100' 100, '110' 110, '120' 120, '' 62 1, '' 64 1, '' 66 1, '' 68 1, '' 72 1, '' 74 1, '' 76 1, '' 78 1, '' 82 1, '' 84 1, '' 86 1, '' 88 1, '' 92 1, '' 94 1, '' 96 1, '' 98 1, '' 102 1, '' 104 1, '' 106 1, '' 108 1, '' 112 1, '' 114 1, '' 116 1, '' 118 1)
set yrange [0.4:1.6]
set ytics ('0.5' 0.5, '1.0' 1, '1.5' 1.5, '' 0.4 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1, '' 1.1 1, '' 1.2000000000000002 1, '' 1.3 1, '' 1.4000000000000001 1, '' 1.6 1)
plot [60:120] 1 with lines linewidth 2 linecolor rgb '#606060' notitle, \
     data index 7 using 1:2:3 with filledcurves fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder notitle, \
     data index 8 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 8 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 9 using 1:($3>0?$2:NaN) with points pointtype 9 pointsize 1.3*marks linecolor rgb '#000000' notitle, \
     data index 9 using 1:($3<0?$2:NaN) with points pointtype 11 pointsize 1.3*marks linecolor rgb '#000000' notitle
unset multiplot
unset label
unset arrow
unset object
set output
set terminal svg enhanced size 605,454 fontscale 1.3333 font 'DejaVu Sans,10.95' rounded linewidth 0.4141 background rgb 'white'
marks = 0.723
set output './mass.svg'
set multiplot
set bmargin at screen 0.3774
set tmargin at screen 0.95436
set xrange [60:120]
set xtics ('' 60, '' 70, '' 80, '' 90, '' 100, '' 110, '' 120, '' 62 1, '' 64 1, '' 66 1, '' 68 1, '' 72 1, '' 74 1, '' 76 1, '' 78 1, '' 82 1, '' 84 1, '' 86 1, '' 88 1, '' 92 1, '' 94 1, '' 96 1, '' 98 1, '' 102 1, '' 104 1, '' 106 1, '' 108 1, '' 112 1, '' 114 1, '' 116 1, '' 118 1)
set yrange [0:520.55]
set ytics ('0' -0, '100' 100, '200' 200, '300' 300, '400' 400, '500' 500, '' 20 1, '' 40 1, '' 60 1, '' 80 1, '' 120 1, '' 140 1, '' 160 1, '' 180 1, '' 220 1, '' 240 1, '' 260 1, '' 280 1, '' 320 1, '' 340 1, '' 360 1, '' 380 1, '' 420 1, '' 440 1, '' 460 1, '' 480 1, '' 520 1)
set label 'm_{μμ} [GeV]' at screen 0.96919, screen 0.03286 right font ',13.1'
set label 'Events / (2 GeV)' at screen 0.024259, screen 0.95436 right rotate by 90 font ',13.1'
set key at graph 0.98726, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',11'
set label 'Simulation and pseudo-data' at graph 0.021278, graph 0.93732 left front font ',11'
set label '√s = 13 TeV, 0.8 fb^{−1}' at graph 0.021278, graph 0.84197 left front font ',11'
plot data index 4 using 1:2 with filledcurves closed fillcolor rgb '#56B4E9' fillstyle solid 1 noborder notitle, \
     data index 4 using 1:2 with lines linewidth 1.2 linecolor rgb '#303030' notitle, \
     data index 2 using 1:2 with filledcurves closed fillcolor rgb '#E69F00' fillstyle solid 1 noborder notitle, \
     data index 2 using 1:2 with lines linewidth 1.2 linecolor rgb '#303030' notitle, \
     data index 6 using 1:2:3 with filledcurves fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Data', \
     keyentry with boxes fillcolor rgb '#56B4E9' fillstyle solid 1 border linecolor rgb '#303030' linewidth 1.2 title 'Z → μμ', \
     keyentry with boxes fillcolor rgb '#E69F00' fillstyle solid 1 border linecolor rgb '#303030' linewidth 1.2 title 'tt̄', \
     keyentry with boxes fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder title 'Statistical error'
unset label
unset arrow
unset object
unset logscale y
set key off
set bmargin at screen 0.14149
set tmargin at screen 0.36097
set label 'Ratio' at screen 0.024259, screen 0.25123 center rotate by 90 font ',13.15'
set xrange [60:120]
set xtics ('60' 60, '70' 70, '80' 80, '90' 90, '100' 100, '110' 110, '120' 120, '' 62 1, '' 64 1, '' 66 1, '' 68 1, '' 72 1, '' 74 1, '' 76 1, '' 78 1, '' 82 1, '' 84 1, '' 86 1, '' 88 1, '' 92 1, '' 94 1, '' 96 1, '' 98 1, '' 102 1, '' 104 1, '' 106 1, '' 108 1, '' 112 1, '' 114 1, '' 116 1, '' 118 1)
set yrange [0.4:1.6]
set ytics ('0.5' 0.5, '1.0' 1, '1.5' 1.5, '' 0.4 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1, '' 1.1 1, '' 1.2000000000000002 1, '' 1.3 1, '' 1.4000000000000001 1, '' 1.6 1)
plot [60:120] 1 with lines linewidth 2 linecolor rgb '#606060' notitle, \
     data index 7 using 1:2:3 with filledcurves fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder notitle, \
     data index 8 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 8 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 9 using 1:($3>0?$2:NaN) with points pointtype 9 pointsize 1.3*marks linecolor rgb '#000000' notitle, \
     data index 9 using 1:($3<0?$2:NaN) with points pointtype 11 pointsize 1.3*marks linecolor rgb '#000000' notitle
unset multiplot
unset label
unset arrow
unset object
set output
set terminal pdfcairo enhanced size 16cm,12cm fontscale 0.75 font 'DejaVu Sans,10.95' rounded linewidth 0.6901 background rgb 'white'
marks = 0.6901
set output './mass.pdf'
set multiplot
set bmargin at screen 0.3774
set tmargin at screen 0.95436
set xrange [60:120]
set xtics ('' 60, '' 70, '' 80, '' 90, '' 100, '' 110, '' 120, '' 62 1, '' 64 1, '' 66 1, '' 68 1, '' 72 1, '' 74 1, '' 76 1, '' 78 1, '' 82 1, '' 84 1, '' 86 1, '' 88 1, '' 92 1, '' 94 1, '' 96 1, '' 98 1, '' 102 1, '' 104 1, '' 106 1, '' 108 1, '' 112 1, '' 114 1, '' 116 1, '' 118 1)
set yrange [0:520.55]
set ytics ('0' -0, '100' 100, '200' 200, '300' 300, '400' 400, '500' 500, '' 20 1, '' 40 1, '' 60 1, '' 80 1, '' 120 1, '' 140 1, '' 160 1, '' 180 1, '' 220 1, '' 240 1, '' 260 1, '' 280 1, '' 320 1, '' 340 1, '' 360 1, '' 380 1, '' 420 1, '' 440 1, '' 460 1, '' 480 1, '' 520 1)
set label 'm_{μμ} [GeV]' at screen 0.96919, screen 0.03286 right font ',13.1'
set label 'Events / (2 GeV)' at screen 0.024259, screen 0.95436 right rotate by 90 font ',13.1'
set key at graph 0.98726, graph 0.975 right top Left reverse samplen 2 spacing 1.12 font ',11'
set label 'Simulation and pseudo-data' at graph 0.021278, graph 0.93732 left front font ',11'
set label '√s = 13 TeV, 0.8 fb^{−1}' at graph 0.021278, graph 0.84197 left front font ',11'
plot data index 4 using 1:2 with filledcurves closed fillcolor rgb '#56B4E9' fillstyle solid 1 noborder notitle, \
     data index 4 using 1:2 with lines linewidth 1.2 linecolor rgb '#303030' notitle, \
     data index 2 using 1:2 with filledcurves closed fillcolor rgb '#E69F00' fillstyle solid 1 noborder notitle, \
     data index 2 using 1:2 with lines linewidth 1.2 linecolor rgb '#303030' notitle, \
     data index 6 using 1:2:3 with filledcurves fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder notitle, \
     data index 0 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 0 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     keyentry with yerrorbars pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' title 'Data', \
     keyentry with boxes fillcolor rgb '#56B4E9' fillstyle solid 1 border linecolor rgb '#303030' linewidth 1.2 title 'Z → μμ', \
     keyentry with boxes fillcolor rgb '#E69F00' fillstyle solid 1 border linecolor rgb '#303030' linewidth 1.2 title 'tt̄', \
     keyentry with boxes fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder title 'Statistical error'
unset label
unset arrow
unset object
unset logscale y
set key off
set bmargin at screen 0.14149
set tmargin at screen 0.36097
set label 'Ratio' at screen 0.024259, screen 0.25123 center rotate by 90 font ',13.15'
set xrange [60:120]
set xtics ('60' 60, '70' 70, '80' 80, '90' 90, '100' 100, '110' 110, '120' 120, '' 62 1, '' 64 1, '' 66 1, '' 68 1, '' 72 1, '' 74 1, '' 76 1, '' 78 1, '' 82 1, '' 84 1, '' 86 1, '' 88 1, '' 92 1, '' 94 1, '' 96 1, '' 98 1, '' 102 1, '' 104 1, '' 106 1, '' 108 1, '' 112 1, '' 114 1, '' 116 1, '' 118 1)
set yrange [0.4:1.6]
set ytics ('0.5' 0.5, '1.0' 1, '1.5' 1.5, '' 0.4 1, '' 0.6000000000000001 1, '' 0.7000000000000001 1, '' 0.8 1, '' 0.9 1, '' 1.1 1, '' 1.2000000000000002 1, '' 1.3 1, '' 1.4000000000000001 1, '' 1.6 1)
plot [60:120] 1 with lines linewidth 2 linecolor rgb '#606060' notitle, \
     data index 7 using 1:2:3 with filledcurves fillcolor rgb '#000000' fillstyle transparent solid 0.25 noborder notitle, \
     data index 8 using 1:5:(0):($6-$5) with vectors nohead linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 8 using 1:2 with points pointtype 7 pointsize marks linewidth 2.5 linecolor rgb '#000000' notitle, \
     data index 9 using 1:($3>0?$2:NaN) with points pointtype 9 pointsize 1.3*marks linecolor rgb '#000000' notitle, \
     data index 9 using 1:($3<0?$2:NaN) with points pointtype 11 pointsize 1.3*marks linecolor rgb '#000000' notitle
unset multiplot
unset label
unset arrow
unset object
set output
