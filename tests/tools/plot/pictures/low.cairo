%!CairoScript
<< /content //COLOR /width 860 /height 124 >> surface context
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
n 134.324219 47 m 134.324219 76 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 182.800781 47 m 182.800781 76 l
stroke+
n 220.402344 47 m 220.402344 76 l
1 set-line-width
stroke+
n 220.402344 76 m 220.402344 80 l
0.133333 g set-source
stroke+
% 50
n 213.199219 85 14.398438 8.398438 rectangle
fill+
n 251.121094 47 m 251.121094 76 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 277.097656 47 m 277.097656 76 l
stroke+
n 299.597656 47 m 299.597656 76 l
stroke+
n 319.445312 47 m 319.445312 76 l
stroke+
n 337.199219 47 m 337.199219 76 l
1 set-line-width
stroke+
n 337.199219 76 m 337.199219 80 l
0.133333 g set-source
stroke+
% 100
n 326.398438 85 21.601562 8.398438 rectangle
fill+
n 454 47 m 454 76 l
0.866667 g set-source
stroke+
n 454 76 m 454 80 l
0.133333 g set-source
stroke+
% 200
n 443.199219 85 21.601562 8.398438 rectangle
fill+
n 522.324219 47 m 522.324219 76 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 570.800781 47 m 570.800781 76 l
stroke+
n 608.402344 47 m 608.402344 76 l
1 set-line-width
stroke+
n 608.402344 76 m 608.402344 80 l
0.133333 g set-source
stroke+
% 500
n 597.601562 85 21.601562 8.398438 rectangle
fill+
n 639.121094 47 m 639.121094 76 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 665.097656 47 m 665.097656 76 l
stroke+
n 687.597656 47 m 687.597656 76 l
stroke+
n 707.445312 47 m 707.445312 76 l
stroke+
n 725.199219 47 m 725.199219 76 l
1 set-line-width
stroke+
n 725.199219 76 m 725.199219 80 l
0.133333 g set-source
stroke+
% 1k
n 718 85 14.398438 8.398438 rectangle
fill+
n 842 47 m 842 76 l
0.866667 g set-source
stroke+
n 842 76 m 842 80 l
0.133333 g set-source
stroke+
% 2k
n 834.800781 85 14.398438 8.398438 rectangle
fill+
% Frequency (Hz)
n 399.398438 106 109.199219 9.101562 rectangle
fill+
n 66 76 m 842 76 l
0.866667 g set-source
stroke+
n 62 76 m 66 76 l
0.133333 g set-source
stroke+
% −12
n 22 71.800781 36 8.398438 rectangle
fill+
n 66 56.667969 m 842 56.667969 l
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
n 66 46 776 31 rectangle
clip+
n 66 66.332031 m 453.222656 66.332031 l 454 51.832031 l 686.023438 51.832031 l 686.800781 105 l 842 105 l
0 0.447059 0.698039 rgb set-source
2 set-line-width
//LINE_JOIN_ROUND set-line-join
stroke+
reset-clip
n 66 47 776 29 rectangle
0.4 g set-source
1 set-line-width
//LINE_JOIN_MITER set-line-join
stroke+
pop
