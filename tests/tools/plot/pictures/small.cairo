%!CairoScript
<< /content //COLOR /width 200 /height 124 >> surface context
1 g set-source
paint
% Title
0.133333 g set-source
n 66 24.25 45 10.5 rectangle
fill+
n 66 47 m 66 76 l
0.866667 g set-source
1 set-line-width
stroke+
n 66 76 m 66 80 l
0.133333 g set-source
stroke+
% 20
n 58.800781 85 14.398438 8.398438 rectangle
fill+
n 76.214844 47 m 76.214844 76 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 83.460938 47 m 83.460938 76 l
stroke+
n 89.082031 47 m 89.082031 76 l
1 set-line-width
stroke+
n 89.082031 76 m 89.082031 80 l
0.133333 g set-source
stroke+
% 50
n 81.878906 85 14.398438 8.398438 rectangle
fill+
n 93.671875 47 m 93.671875 76 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 97.554688 47 m 97.554688 76 l
stroke+
n 100.917969 47 m 100.917969 76 l
stroke+
n 103.886719 47 m 103.886719 76 l
stroke+
n 106.539062 47 m 106.539062 76 l
1 set-line-width
stroke+
n 124 47 m 124 76 l
stroke+
n 124 76 m 124 80 l
0.133333 g set-source
stroke+
% 200
n 113.199219 85 21.601562 8.398438 rectangle
fill+
n 134.214844 47 m 134.214844 76 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 141.460938 47 m 141.460938 76 l
stroke+
n 147.082031 47 m 147.082031 76 l
1 set-line-width
stroke+
n 151.671875 47 m 151.671875 76 l
0.5 set-line-width
stroke+
n 155.554688 47 m 155.554688 76 l
stroke+
n 158.917969 47 m 158.917969 76 l
stroke+
n 161.886719 47 m 161.886719 76 l
stroke+
n 164.539062 47 m 164.539062 76 l
1 set-line-width
stroke+
n 164.539062 76 m 164.539062 80 l
0.133333 g set-source
stroke+
% 1k
n 157.339844 85 14.398438 8.398438 rectangle
fill+
n 182 47 m 182 76 l
0.866667 g set-source
stroke+
% Frequency (Hz)
0.133333 g set-source
n 69.398438 106 109.199219 9.101562 rectangle
fill+
n 66 76 m 182 76 l
0.866667 g set-source
stroke+
n 62 76 m 66 76 l
0.133333 g set-source
stroke+
% −12
n 22 71.800781 36 8.398438 rectangle
fill+
n 66 56.667969 m 182 56.667969 l
0.4 g set-source
stroke+
n 62 56.667969 m 66 56.667969 l
0.133333 g set-source
stroke+
% 0
n 50.800781 52.46875 7.199219 8.398438 rectangle
fill+
% Gain (dB)
n 9.449219 26.402344 9.101562 70.199219 rectangle
fill+
n 66 46 116 31 rectangle
clip+
n 66 66.332031 m 123.882812 66.332031 l 124 51.832031 l 158.683594 51.832031 l 158.800781 105 l 182 105 l
0 0.447059 0.698039 rgb set-source
2 set-line-width
//LINE_JOIN_ROUND set-line-join
stroke+
reset-clip
n 66 47 116 29 rectangle
0.4 g set-source
1 set-line-width
//LINE_JOIN_MITER set-line-join
stroke+
pop
