%!CairoScript
<< /content //COLOR /width 920 /height 620 >> surface context
1 g set-source
paint
% �T�क ��� ��� �� 🎵 ��
0.133333 g set-source
n 14 20.699219 529.199219 12.601562 rectangle
fill+
% what it was made fromxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx
n 14 45.800781 871.199219 8.398438 rectangle
fill+
% Title
n 66 70.25 45 10.5 rectangle
fill+
n 66 103 m 94 103 l
0 0.447059 0.698039 rgb set-source
stroke+
% line
0.133333 g set-source
n 100 98.449219 31.199219 9.101562 rectangle
fill+
n 153.199219 103 m 181.199219 103 l
0 0.619608 0.45098 rgb set-source
1.5 set-line-width
[5.25 3] 0 set-dash
stroke+
% dashes
0.133333 g set-source
n 187.199219 98.449219 46.800781 9.101562 rectangle
fill+
0 0.447059 0.698039 rgb set-source
n 84 123 m 84 128.332031 76 128.332031 76 123 c 76 117.667969 84 117.667969 84 123 c
fill+
% a name that takes a row
0.133333 g set-source
n 100 118.449219 179.398438 9.101562 rectangle
fill+
n 301.398438 123 m 329.398438 123 l
0 0.447059 0.698039 rgb set-source
2 set-line-width
[] 0 set-dash
stroke+
n 66 137 m 66 292 l
0.866667 g set-source
1 set-line-width
stroke+
n 66 292 m 66 296 l
0.133333 g set-source
stroke+
% 20
n 58.800781 301 14.398438 8.398438 rectangle
fill+
n 99.105469 137 m 99.105469 292 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 122.59375 137 m 122.59375 292 l
stroke+
n 140.8125 137 m 140.8125 292 l
1 set-line-width
stroke+
n 140.8125 292 m 140.8125 296 l
0.133333 g set-source
stroke+
% 50
n 133.613281 301 14.398438 8.398438 rectangle
fill+
n 155.699219 137 m 155.699219 292 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 168.285156 137 m 168.285156 292 l
stroke+
n 179.1875 137 m 179.1875 292 l
stroke+
n 188.804688 137 m 188.804688 292 l
stroke+
n 197.40625 137 m 197.40625 292 l
1 set-line-width
stroke+
n 197.40625 292 m 197.40625 296 l
0.133333 g set-source
stroke+
% 100
n 186.605469 301 21.601562 8.398438 rectangle
fill+
n 254 137 m 254 292 l
0.866667 g set-source
stroke+
n 254 292 m 254 296 l
0.133333 g set-source
stroke+
% 200
n 243.199219 301 21.601562 8.398438 rectangle
fill+
n 287.105469 137 m 287.105469 292 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 310.59375 137 m 310.59375 292 l
stroke+
n 328.8125 137 m 328.8125 292 l
1 set-line-width
stroke+
n 328.8125 292 m 328.8125 296 l
0.133333 g set-source
stroke+
% 500
n 318.011719 301 21.601562 8.398438 rectangle
fill+
n 343.699219 137 m 343.699219 292 l
0.866667 g set-source
0.5 set-line-width
stroke+
n 356.285156 137 m 356.285156 292 l
stroke+
n 367.1875 137 m 367.1875 292 l
stroke+
n 376.804688 137 m 376.804688 292 l
stroke+
n 385.40625 137 m 385.40625 292 l
1 set-line-width
stroke+
n 385.40625 292 m 385.40625 296 l
0.133333 g set-source
stroke+
% 1k
n 378.207031 301 14.398438 8.398438 rectangle
fill+
n 442 137 m 442 292 l
0.866667 g set-source
stroke+
n 442 292 m 442 296 l
0.133333 g set-source
stroke+
% 2k
n 434.800781 301 14.398438 8.398438 rectangle
fill+
% Frequency (Hz)
n 199.398438 322 109.199219 9.101562 rectangle
fill+
n 66 292 m 442 292 l
0.866667 g set-source
stroke+
n 62 292 m 66 292 l
0.133333 g set-source
stroke+
% −12
n 22 287.800781 36 8.398438 rectangle
fill+
n 66 240.332031 m 442 240.332031 l
0.866667 g set-source
stroke+
n 62 240.332031 m 66 240.332031 l
0.133333 g set-source
stroke+
% −6
n 29.199219 236.136719 28.800781 8.398438 rectangle
fill+
n 66 188.667969 m 442 188.667969 l
0.4 g set-source
stroke+
n 62 188.667969 m 66 188.667969 l
0.133333 g set-source
stroke+
% 0
n 50.800781 184.46875 7.199219 8.398438 rectangle
fill+
n 66 137 m 442 137 l
0.866667 g set-source
stroke+
n 62 137 m 66 137 l
0.133333 g set-source
stroke+
% 6
n 50.800781 132.800781 7.199219 8.398438 rectangle
fill+
% Gain (dB)
n 9.449219 179.402344 9.101562 70.199219 rectangle
fill+
n 66 136 376 157 rectangle
clip+
n 66 240.332031 m 253.625 240.332031 l 254 162.832031 l 366.425781 162.832031 l 366.800781 447 l 442 447 l
0 0.447059 0.698039 rgb set-source
2 set-line-width
//LINE_JOIN_ROUND set-line-join
stroke+
n 66 214.5 m 442 162.832031 l
0 0.619608 0.45098 rgb set-source
1.5 set-line-width
[5.25 3] 0 set-dash
stroke+
0 0.447059 0.698039 rgb set-source
n 258 188.667969 m 258 194 250 194 250 188.667969 c 250 183.332031 258 183.332031 258 188.667969 c
fill+
reset-clip
n 66 137 376 155 rectangle
0.4 g set-source
1 set-line-width
//LINE_JOIN_MITER set-line-join
[] 0 set-dash
stroke+
<< /width 2 /height 3 /format //RGB24 /source <~*t1^;oSreKUq/Ha!!!-%!!E~> >> image pattern
  [0.00684932 0 0 0.0133929 -3.60274 -0.910714] set-matrix
  //FILTER_NEAREST set-filter
  set-source
paint
n 526 292 m 526 296 l
0.133333 g set-source
stroke+
% 0
n 522.398438 301 7.199219 8.398438 rectangle
fill+
n 672 292 m 672 296 l
stroke+
% 1
n 668.398438 301 7.199219 8.398438 rectangle
fill+
n 818 292 m 818 296 l
stroke+
% 2
n 814.398438 301 7.199219 8.398438 rectangle
fill+
% Time (s)
n 640.800781 322 62.398438 9.101562 rectangle
fill+
n 522 292 m 526 292 l
stroke+
% 0.0
n 496.398438 287.800781 21.601562 8.398438 rectangle
fill+
n 522 247.199219 m 526 247.199219 l
stroke+
% 0.2
n 496.398438 243 21.601562 8.398438 rectangle
fill+
n 522 202.398438 m 526 202.398438 l
stroke+
% 0.4
n 496.398438 198.203125 21.601562 8.398438 rectangle
fill+
n 522 157.601562 m 526 157.601562 l
stroke+
% 0.6
n 496.398438 153.402344 21.601562 8.398438 rectangle
fill+
n 522 112.800781 m 526 112.800781 l
stroke+
% 0.8
n 496.398438 108.601562 21.601562 8.398438 rectangle
fill+
n 522 68 m 526 68 l
stroke+
% 1.0
n 496.398438 63.800781 21.601562 8.398438 rectangle
fill+
n 526 68 292 224 rectangle
0.4 g set-source
stroke+
0.00379902 0.00147059 0.0240196 rgb set-source
n 834 290.25 14 1.75 rectangle
fill+
0.0113971 0.00441176 0.0406863 rgb set-source
n 834 288.5 14 2.625 rectangle
fill+
0.0189951 0.00735294 0.0573529 rgb set-source
n 834 286.75 14 2.625 rectangle
fill+
0.0265931 0.0102941 0.0740196 rgb set-source
n 834 285 14 2.625 rectangle
fill+
0.0341912 0.0132353 0.0906863 rgb set-source
n 834 283.25 14 2.625 rectangle
fill+
0.0417892 0.0161765 0.107353 rgb set-source
n 834 281.5 14 2.625 rectangle
fill+
0.0493873 0.0191176 0.12402 rgb set-source
n 834 279.75 14 2.625 rectangle
fill+
0.0569853 0.0220588 0.140686 rgb set-source
n 834 278 14 2.625 rectangle
fill+
0.0645833 0.025 0.157353 rgb set-source
n 834 276.25 14 2.625 rectangle
fill+
0.0721814 0.0279412 0.17402 rgb set-source
n 834 274.5 14 2.625 rectangle
fill+
0.0797794 0.0308824 0.190686 rgb set-source
n 834 272.75 14 2.625 rectangle
fill+
0.0873775 0.0338235 0.207353 rgb set-source
n 834 271 14 2.625 rectangle
fill+
0.0949755 0.0367647 0.22402 rgb set-source
n 834 269.25 14 2.625 rectangle
fill+
0.102574 0.0397059 0.240686 rgb set-source
n 834 267.5 14 2.625 rectangle
fill+
0.110172 0.0426471 0.257353 rgb set-source
n 834 265.75 14 2.625 rectangle
fill+
0.11777 0.0455882 0.27402 rgb set-source
n 834 264 14 2.625 rectangle
fill+
0.128186 0.0474265 0.286887 rgb set-source
n 834 262.25 14 2.625 rectangle
fill+
0.141422 0.0481618 0.295956 rgb set-source
n 834 260.5 14 2.625 rectangle
fill+
0.154657 0.0488971 0.305025 rgb set-source
n 834 258.75 14 2.625 rectangle
fill+
0.167892 0.0496324 0.314093 rgb set-source
n 834 257 14 2.625 rectangle
fill+
0.181127 0.0503676 0.323162 rgb set-source
n 834 255.25 14 2.625 rectangle
fill+
0.194363 0.0511029 0.33223 rgb set-source
n 834 253.5 14 2.625 rectangle
fill+
0.207598 0.0518382 0.341299 rgb set-source
n 834 251.75 14 2.625 rectangle
fill+
0.220833 0.0525735 0.350368 rgb set-source
n 834 250 14 2.625 rectangle
fill+
0.234069 0.0533088 0.359436 rgb set-source
n 834 248.25 14 2.625 rectangle
fill+
0.247304 0.0540441 0.368505 rgb set-source
n 834 246.5 14 2.625 rectangle
fill+
0.260539 0.0547794 0.377574 rgb set-source
n 834 244.75 14 2.625 rectangle
fill+
0.273775 0.0555147 0.386642 rgb set-source
n 834 243 14 2.625 rectangle
fill+
0.28701 0.05625 0.395711 rgb set-source
n 834 241.25 14 2.625 rectangle
fill+
0.300245 0.0569853 0.404779 rgb set-source
n 834 239.5 14 2.625 rectangle
fill+
0.31348 0.0577206 0.413848 rgb set-source
n 834 237.75 14 2.625 rectangle
fill+
0.326716 0.0584559 0.422917 rgb set-source
n 834 236 14 2.625 rectangle
fill+
0.339583 0.061152 0.427083 rgb set-source
n 834 234.25 14 2.625 rectangle
fill+
0.352083 0.0658088 0.426348 rgb set-source
n 834 232.5 14 2.625 rectangle
fill+
0.364583 0.0704657 0.425613 rgb set-source
n 834 230.75 14 2.625 rectangle
fill+
0.377083 0.0751225 0.424877 rgb set-source
n 834 229 14 2.625 rectangle
fill+
0.389583 0.0797794 0.424142 rgb set-source
n 834 227.25 14 2.625 rectangle
fill+
0.402083 0.0844363 0.423407 rgb set-source
n 834 225.5 14 2.625 rectangle
fill+
0.414583 0.0890931 0.422672 rgb set-source
n 834 223.75 14 2.625 rectangle
fill+
0.427083 0.09375 0.421936 rgb set-source
n 834 222 14 2.625 rectangle
fill+
0.439583 0.0984069 0.421201 rgb set-source
n 834 220.25 14 2.625 rectangle
fill+
0.452083 0.103064 0.420466 rgb set-source
n 834 218.5 14 2.625 rectangle
fill+
0.464583 0.107721 0.41973 rgb set-source
n 834 216.75 14 2.625 rectangle
fill+
0.477083 0.112377 0.418995 rgb set-source
n 834 215 14 2.625 rectangle
fill+
0.489583 0.117034 0.41826 rgb set-source
n 834 213.25 14 2.625 rectangle
fill+
0.502083 0.121691 0.417525 rgb set-source
n 834 211.5 14 2.625 rectangle
fill+
0.514583 0.126348 0.416789 rgb set-source
n 834 209.75 14 2.625 rectangle
fill+
0.527083 0.131005 0.416054 rgb set-source
n 834 208 14 2.625 rectangle
fill+
0.539461 0.135784 0.413113 rgb set-source
n 834 206.25 14 2.625 rectangle
fill+
0.551716 0.140686 0.407966 rgb set-source
n 834 204.5 14 2.625 rectangle
fill+
0.563971 0.145588 0.402819 rgb set-source
n 834 202.75 14 2.625 rectangle
fill+
0.576225 0.15049 0.397672 rgb set-source
n 834 201 14 2.625 rectangle
fill+
0.58848 0.155392 0.392525 rgb set-source
n 834 199.25 14 2.625 rectangle
fill+
0.600735 0.160294 0.387377 rgb set-source
n 834 197.5 14 2.625 rectangle
fill+
0.61299 0.165196 0.38223 rgb set-source
n 834 195.75 14 2.625 rectangle
fill+
0.625245 0.170098 0.377083 rgb set-source
n 834 194 14 2.625 rectangle
fill+
0.6375 0.175 0.371936 rgb set-source
n 834 192.25 14 2.625 rectangle
fill+
0.649755 0.179902 0.366789 rgb set-source
n 834 190.5 14 2.625 rectangle
fill+
0.66201 0.184804 0.361642 rgb set-source
n 834 188.75 14 2.625 rectangle
fill+
0.674265 0.189706 0.356495 rgb set-source
n 834 187 14 2.625 rectangle
fill+
0.68652 0.194608 0.351348 rgb set-source
n 834 185.25 14 2.625 rectangle
fill+
0.698775 0.19951 0.346201 rgb set-source
n 834 183.5 14 2.625 rectangle
fill+
0.711029 0.204412 0.341054 rgb set-source
n 834 181.75 14 2.625 rectangle
fill+
0.723284 0.209314 0.335907 rgb set-source
n 834 180 14 2.625 rectangle
fill+
0.734436 0.216054 0.329167 rgb set-source
n 834 178.25 14 2.625 rectangle
fill+
0.744485 0.224632 0.320833 rgb set-source
n 834 176.5 14 2.625 rectangle
fill+
0.754534 0.233211 0.3125 rgb set-source
n 834 174.75 14 2.625 rectangle
fill+
0.764583 0.241789 0.304167 rgb set-source
n 834 173 14 2.625 rectangle
fill+
0.774632 0.250368 0.295833 rgb set-source
n 834 171.25 14 2.625 rectangle
fill+
0.784681 0.258946 0.2875 rgb set-source
n 834 169.5 14 2.625 rectangle
fill+
0.79473 0.267525 0.279167 rgb set-source
n 834 167.75 14 2.625 rectangle
fill+
0.804779 0.276103 0.270833 rgb set-source
n 834 166 14 2.625 rectangle
fill+
0.814828 0.284681 0.2625 rgb set-source
n 834 164.25 14 2.625 rectangle
fill+
0.824877 0.29326 0.254167 rgb set-source
n 834 162.5 14 2.625 rectangle
fill+
0.834926 0.301838 0.245833 rgb set-source
n 834 160.75 14 2.625 rectangle
fill+
0.844975 0.310417 0.2375 rgb set-source
n 834 159 14 2.625 rectangle
fill+
0.855025 0.318995 0.229167 rgb set-source
n 834 157.25 14 2.625 rectangle
fill+
0.865074 0.327574 0.220833 rgb set-source
n 834 155.5 14 2.625 rectangle
fill+
0.875123 0.336152 0.2125 rgb set-source
n 834 153.75 14 2.625 rectangle
fill+
0.885172 0.34473 0.204167 rgb set-source
n 834 152 14 2.625 rectangle
fill+
0.892892 0.35527 0.194975 rgb set-source
n 834 150.25 14 2.625 rectangle
fill+
0.898284 0.36777 0.184926 rgb set-source
n 834 148.5 14 2.625 rectangle
fill+
0.903676 0.38027 0.174877 rgb set-source
n 834 146.75 14 2.625 rectangle
fill+
0.909069 0.39277 0.164828 rgb set-source
n 834 145 14 2.625 rectangle
fill+
0.914461 0.40527 0.154779 rgb set-source
n 834 143.25 14 2.625 rectangle
fill+
0.919853 0.41777 0.14473 rgb set-source
n 834 141.5 14 2.625 rectangle
fill+
0.925245 0.43027 0.134681 rgb set-source
n 834 139.75 14 2.625 rectangle
fill+
0.930637 0.44277 0.124632 rgb set-source
n 834 138 14 2.625 rectangle
fill+
0.936029 0.45527 0.114583 rgb set-source
n 834 136.25 14 2.625 rectangle
fill+
0.941422 0.46777 0.104534 rgb set-source
n 834 134.5 14 2.625 rectangle
fill+
0.946814 0.48027 0.0944853 rgb set-source
n 834 132.75 14 2.625 rectangle
fill+
0.952206 0.49277 0.0844363 rgb set-source
n 834 131 14 2.625 rectangle
fill+
0.957598 0.50527 0.0743873 rgb set-source
n 834 129.25 14 2.625 rectangle
fill+
0.96299 0.51777 0.0643382 rgb set-source
n 834 127.5 14 2.625 rectangle
fill+
0.968382 0.53027 0.0542892 rgb set-source
n 834 125.75 14 2.625 rectangle
fill+
0.973775 0.54277 0.0442402 rgb set-source
n 834 124 14 2.625 rectangle
fill+
0.976471 0.556495 0.0441176 rgb set-source
n 834 122.25 14 2.625 rectangle
fill+
0.976471 0.571446 0.0539216 rgb set-source
n 834 120.5 14 2.625 rectangle
fill+
0.976471 0.586397 0.0637255 rgb set-source
n 834 118.75 14 2.625 rectangle
fill+
0.976471 0.601348 0.0735294 rgb set-source
n 834 117 14 2.625 rectangle
fill+
0.976471 0.616299 0.0833333 rgb set-source
n 834 115.25 14 2.625 rectangle
fill+
0.976471 0.63125 0.0931373 rgb set-source
n 834 113.5 14 2.625 rectangle
fill+
0.976471 0.646201 0.102941 rgb set-source
n 834 111.75 14 2.625 rectangle
fill+
0.976471 0.661152 0.112745 rgb set-source
n 834 110 14 2.625 rectangle
fill+
0.976471 0.676103 0.122549 rgb set-source
n 834 108.25 14 2.625 rectangle
fill+
0.976471 0.691054 0.132353 rgb set-source
n 834 106.5 14 2.625 rectangle
fill+
0.976471 0.706005 0.142157 rgb set-source
n 834 104.75 14 2.625 rectangle
fill+
0.976471 0.720956 0.151961 rgb set-source
n 834 103 14 2.625 rectangle
fill+
0.976471 0.735907 0.161765 rgb set-source
n 834 101.25 14 2.625 rectangle
fill+
0.976471 0.750858 0.171569 rgb set-source
n 834 99.5 14 2.625 rectangle
fill+
0.976471 0.765809 0.181373 rgb set-source
n 834 97.75 14 2.625 rectangle
fill+
0.976471 0.78076 0.191176 rgb set-source
n 834 96 14 2.625 rectangle
fill+
0.976838 0.794853 0.210049 rgb set-source
n 834 94.25 14 2.625 rectangle
fill+
0.977574 0.808088 0.23799 rgb set-source
n 834 92.5 14 2.625 rectangle
fill+
0.978309 0.821324 0.265931 rgb set-source
n 834 90.75 14 2.625 rectangle
fill+
0.979044 0.834559 0.293873 rgb set-source
n 834 89 14 2.625 rectangle
fill+
0.979779 0.847794 0.321814 rgb set-source
n 834 87.25 14 2.625 rectangle
fill+
0.980515 0.861029 0.349755 rgb set-source
n 834 85.5 14 2.625 rectangle
fill+
0.98125 0.874265 0.377696 rgb set-source
n 834 83.75 14 2.625 rectangle
fill+
0.981985 0.8875 0.405637 rgb set-source
n 834 82 14 2.625 rectangle
fill+
0.982721 0.900735 0.433578 rgb set-source
n 834 80.25 14 2.625 rectangle
fill+
0.983456 0.913971 0.46152 rgb set-source
n 834 78.5 14 2.625 rectangle
fill+
0.984191 0.927206 0.489461 rgb set-source
n 834 76.75 14 2.625 rectangle
fill+
0.984926 0.940441 0.517402 rgb set-source
n 834 75 14 2.625 rectangle
fill+
0.985662 0.953676 0.545343 rgb set-source
n 834 73.25 14 2.625 rectangle
fill+
0.986397 0.966912 0.573284 rgb set-source
n 834 71.5 14 2.625 rectangle
fill+
0.987132 0.980147 0.601225 rgb set-source
n 834 69.75 14 2.625 rectangle
fill+
0.987868 0.993382 0.629167 rgb set-source
n 834 68 14 2.625 rectangle
fill+
n 834 68 14 224 rectangle
0.4 g set-source
stroke+
n 848 292 m 852 292 l
0.133333 g set-source
stroke+
% −40
n 856 287.800781 36 8.398438 rectangle
fill+
n 848 236 m 852 236 l
stroke+
% −30
n 856 231.800781 36 8.398438 rectangle
fill+
n 848 180 m 852 180 l
stroke+
% −20
n 856 175.800781 36 8.398438 rectangle
fill+
n 848 124 m 852 124 l
stroke+
% −10
n 856 119.800781 36 8.398438 rectangle
fill+
n 848 68 m 852 68 l
stroke+
% 0
n 856 63.800781 7.199219 8.398438 rectangle
fill+
% dB
n 897.449219 172.199219 9.101562 15.601562 rectangle
fill+
n 66 348 m 66 572 l
0.866667 g set-source
stroke+
n 66 572 m 66 576 l
0.133333 g set-source
stroke+
% 0.0
n 55.199219 581 21.601562 8.398438 rectangle
fill+
n 141.199219 348 m 141.199219 572 l
0.866667 g set-source
stroke+
n 141.199219 572 m 141.199219 576 l
0.133333 g set-source
stroke+
% 0.2
n 130.398438 581 21.601562 8.398438 rectangle
fill+
n 216.398438 348 m 216.398438 572 l
0.866667 g set-source
stroke+
n 216.398438 572 m 216.398438 576 l
0.133333 g set-source
stroke+
% 0.4
n 205.601562 581 21.601562 8.398438 rectangle
fill+
n 291.601562 348 m 291.601562 572 l
0.866667 g set-source
stroke+
n 291.601562 572 m 291.601562 576 l
0.133333 g set-source
stroke+
% 0.6
n 280.800781 581 21.601562 8.398438 rectangle
fill+
n 366.800781 348 m 366.800781 572 l
0.866667 g set-source
stroke+
n 366.800781 572 m 366.800781 576 l
0.133333 g set-source
stroke+
% 0.8
n 356 581 21.601562 8.398438 rectangle
fill+
n 442 348 m 442 572 l
0.866667 g set-source
stroke+
n 442 572 m 442 576 l
0.133333 g set-source
stroke+
% 1.0
n 431.199219 581 21.601562 8.398438 rectangle
fill+
n 66 572 m 442 572 l
0.866667 g set-source
stroke+
n 62 572 m 66 572 l
0.133333 g set-source
stroke+
% 0.0
n 36.398438 567.800781 21.601562 8.398438 rectangle
fill+
n 66 527.199219 m 442 527.199219 l
0.866667 g set-source
stroke+
n 62 527.199219 m 66 527.199219 l
0.133333 g set-source
stroke+
% 0.2
n 36.398438 523 21.601562 8.398438 rectangle
fill+
n 66 482.398438 m 442 482.398438 l
0.866667 g set-source
stroke+
n 62 482.398438 m 66 482.398438 l
0.133333 g set-source
stroke+
% 0.4
n 36.398438 478.203125 21.601562 8.398438 rectangle
fill+
n 66 437.601562 m 442 437.601562 l
0.866667 g set-source
stroke+
n 62 437.601562 m 66 437.601562 l
0.133333 g set-source
stroke+
% 0.6
n 36.398438 433.402344 21.601562 8.398438 rectangle
fill+
n 66 392.800781 m 442 392.800781 l
0.866667 g set-source
stroke+
n 62 392.800781 m 66 392.800781 l
0.133333 g set-source
stroke+
% 0.8
n 36.398438 388.601562 21.601562 8.398438 rectangle
fill+
n 66 348 m 442 348 l
0.866667 g set-source
stroke+
n 62 348 m 66 348 l
0.133333 g set-source
stroke+
% 1.0
n 36.398438 343.800781 21.601562 8.398438 rectangle
fill+
n 66 348 376 224 rectangle
0.4 g set-source
stroke+
pop
