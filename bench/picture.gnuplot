# The picture of a run. `data` has a function in each line with its mean, worst and best speed; `picture` is the result.

set terminal svg size 820,1000 font "sans-serif,13" background "white"
set rmargin 6
set lmargin 30
set output picture
set title "Speed beside the best alternative or the floor" font ",17"
set xlabel "times as fast as the best other: on average (bar), at worst and best (line)"
set logscale x 2
set xrange [0.125:128]
set xtics ("1/8" 0.125, "1/4" 0.25, "1/2" 0.5, "1" 1, "2" 2, "4" 4, "8" 8, "16" 16, "32" 32, "64" 64, "128" 128)
set yrange [-1:*]
set grid xtics lc rgb "#d8d8d8"
set border 1
set tics nomirror scale 0
set key off
set arrow from 1, graph 0 to 1, graph 1 nohead lc rgb "#404040"

shown(x) = x < 0.125 ? 0.125 : x > 128 ? 128 : x
bar_start(x) = x < 1 ? shown(x) : 1
bar_end(x) = x < 1 ? 1 : shown(x)
color(x) = x < 0.95 ? 0xe0a050 : 0x4080c0

plot data using (1):0:(bar_start($2)):(bar_end($2)):($0 - 0.36):($0 + 0.36):(color($2)):ytic(1) \
       with boxxyerror fill solid noborder lc rgb variable, \
     data using (shown($2)):0:(shown($3)):(shown($4)) with xerrorbars pt 0 lw 1.5 lc rgb "#203040"
