%!CairoScript
<< /content //COLOR /width 1200 /height 630 >> surface context
1 g set-source
paint
% Film
0.133333 g set-source
n 14 20.699219 43.199219 12.601562 rectangle
fill+
% 7 strips on 3 tracks, 0:04.000 at 48000 Hz, 2 channels; time 0 is 1:00:00.000 on the timeline's clock
n 14 45.800781 727.199219 8.398438 rectangle
fill+
0.337255 0.705882 0.913725 rgb set-source
n 120 66 24 12 rectangle
fill+
% Peaks of the material
0.133333 g set-source
n 150 67.800781 151.199219 8.398438 rectangle
fill+
n 321.199219 72 m 345.199219 72 l
0 g set-source
1.1 set-line-width
stroke+
% Fade
0.133333 g set-source
n 351.199219 67.800781 28.800781 8.398438 rectangle
fill+
n 400 72 m 424 72 l
0.8 0.47451 0.654902 rgb set-source
1.8 set-line-width
stroke+
% Automation and gain
0.133333 g set-source
n 430 67.800781 136.800781 8.398438 rectangle
fill+
0.752941 0 0 0.25 rgba set-source
n 586.800781 66 24 12 rectangle
fill+
clip+
n 570 78 m 582 66 l 576 78 m 588 66 l 582 78 m 594 66 l 588 78 m 600 66 l 594 78 m 606 66 l 600 78 m 612 66 l 606 78 m 618 66 l
0.752941 0 0 rgb set-source
0.8 set-line-width
stroke+
% Silent, though it should sound
reset-clip
0.133333 g set-source
n 616.800781 67.800781 216 8.398438 rectangle
fill+
0.752941 0 0 rgb set-source
n 852.800781 70 24 4 rectangle
fill+
% Beyond full scale
0.133333 g set-source
n 882.800781 67.800781 122.398438 8.398438 rectangle
fill+
% Peaks of clips are linear, before fades and levels. Lines are the travel of a fader: silence at the foot, 0 dB at the dashed line, +10 dB at the top.
0.4 g set-source
n 120 86.5 894 7 rectangle
fill+
n 120 175 m 120 644 l
0.866667 g set-source
1 set-line-width
stroke+
% 0:00.0
0.133333 g set-source
n 98.398438 163.601562 43.199219 8.398438 rectangle
fill+
% 0:00.0
n 98.398438 649 43.199219 8.398438 rectangle
fill+
n 251.25 175 m 251.25 644 l
0.866667 g set-source
stroke+
% 0:00.5
0.133333 g set-source
n 229.648438 163.601562 43.199219 8.398438 rectangle
fill+
% 0:00.5
n 229.648438 649 43.199219 8.398438 rectangle
fill+
n 382.5 175 m 382.5 644 l
0.866667 g set-source
stroke+
% 0:01.0
0.133333 g set-source
n 360.898438 163.601562 43.199219 8.398438 rectangle
fill+
% 0:01.0
n 360.898438 649 43.199219 8.398438 rectangle
fill+
n 513.75 175 m 513.75 644 l
0.866667 g set-source
stroke+
% 0:01.5
0.133333 g set-source
n 492.148438 163.601562 43.199219 8.398438 rectangle
fill+
% 0:01.5
n 492.148438 649 43.199219 8.398438 rectangle
fill+
n 645 175 m 645 644 l
0.866667 g set-source
stroke+
% 0:02.0
0.133333 g set-source
n 623.398438 163.601562 43.199219 8.398438 rectangle
fill+
% 0:02.0
n 623.398438 649 43.199219 8.398438 rectangle
fill+
n 776.25 175 m 776.25 644 l
0.866667 g set-source
stroke+
% 0:02.5
0.133333 g set-source
n 754.648438 163.601562 43.199219 8.398438 rectangle
fill+
% 0:02.5
n 754.648438 649 43.199219 8.398438 rectangle
fill+
n 907.5 175 m 907.5 644 l
0.866667 g set-source
stroke+
% 0:03.0
0.133333 g set-source
n 885.898438 163.601562 43.199219 8.398438 rectangle
fill+
% 0:03.0
n 885.898438 649 43.199219 8.398438 rectangle
fill+
n 1038.75 175 m 1038.75 644 l
0.866667 g set-source
stroke+
% 0:03.5
0.133333 g set-source
n 1017.148438 163.601562 43.199219 8.398438 rectangle
fill+
% 0:03.5
n 1017.148438 649 43.199219 8.398438 rectangle
fill+
n 1170 175 m 1170 644 l
0.866667 g set-source
stroke+
% 0:04.0
0.133333 g set-source
n 1148.398438 163.601562 43.199219 8.398438 rectangle
fill+
% 0:04.0
n 1148.398438 649 43.199219 8.398438 rectangle
fill+
% Time (min:s)
n 601.800781 668 86.398438 8.398438 rectangle
fill+
n 382.5 110 m 382.5 157 l
0 0.619608 0.45098 rgb set-source
0.8 set-line-width
stroke+
n 382.5 179 m 382.5 640 l
stroke+
% one
n 385.5 113.5 18 7 rectangle
fill+
n 382.5 124 m 382.5 157 l
stroke+
n 382.5 179 m 382.5 640 l
stroke+
% two
n 385.5 127.5 18 7 rectangle
fill+
n 382.5 138 m 382.5 157 l
stroke+
n 382.5 179 m 382.5 640 l
stroke+
% three
n 385.5 141.5 30 7 rectangle
fill+
n 382.5 152 m 382.5 157 l
stroke+
stroke+
n 1170 110 m 1170 157 l
stroke+
n 1170 179 m 1170 640 l
stroke+
% end
n 1149 113.5 18 7 rectangle
fill+
% T?rack
0.133333 g set-source
n 14 234.800781 43.199219 8.398438 rectangle
fill+
0.337255 0.705882 0.913725 0.15 rgba set-source
n 120 179 262.5 120 rectangle
fill+
% filled:
n 120 246 m 382.5 246 l h 120 246 m
0.337255 0.705882 0.913725 rgb set-source
0.4 set-line-width
stroke+
n 120 228.667969 m 382.5 228.667969 l
0.4 0.4 0.4 0.6 rgba set-source
0.5 set-line-width
[1.75 1] 0 set-dash
stroke+
n 146.25 244.191406 m 356.25 244.191406 l
0.8 0.47451 0.654902 rgb set-source
1.8 set-line-width
//LINE_JOIN_ROUND set-line-join
[] 0 set-dash
stroke+
n 120 298 m 172.5 234.0625 l 225 228.667969 l 277.5 234.0625 l 330 248.554688 l 382.5 298 l
0 g set-source
1.1 set-line-width
stroke+
n 120 179 262.5 120 rectangle
0 0.447059 0.698039 rgb set-source
0.6 set-line-width
stroke+
% a
0.133333 g set-source
n 123 183 6 7 rectangle
fill+
% −6 dB
0.4 g set-source
n 137 183.347656 37.800781 6.300781 rectangle
fill+
0.337255 0.705882 0.913725 0.15 rgba set-source
n 645 179 525 120 rectangle
fill+
% filled:
n 645 220 m 907.5 220 l 907.5 246 l 1170 246 l 907.5 246 l 907.5 272 l 645 272 l h 645 220 m
0.337255 0.705882 0.913725 rgb set-source
0.4 set-line-width
stroke+
0.752941 0 0 0.25 rgba set-source
n 645 194 131.25 104 rectangle
fill+
clip+
n 540 298 m 644 194 l 546 298 m 650 194 l 552 298 m 656 194 l 558 298 m 662 194 l 564 298 m 668 194 l 570 298 m 674 194 l 576 298 m 680 194 l 582 298 m 686 194 l 588 298 m 692 194 l 594 298 m 698 194 l 600 298 m 704 194 l 606 298 m 710 194 l 612 298 m 716 194 l 618 298 m 722 194 l 624 298 m 728 194 l 630 298 m 734 194 l 636 298 m 740 194 l 642 298 m 746 194 l 648 298 m 752 194 l 654 298 m 758 194 l 660 298 m 764 194 l 666 298 m 770 194 l 672 298 m 776 194 l 678 298 m 782 194 l 684 298 m 788 194 l 690 298 m 794 194 l 696 298 m 800 194 l 702 298 m 806 194 l 708 298 m 812 194 l 714 298 m 818 194 l 720 298 m 824 194 l 726 298 m 830 194 l 732 298 m 836 194 l 738 298 m 842 194 l 744 298 m 848 194 l 750 298 m 854 194 l 756 298 m 860 194 l 762 298 m 866 194 l 768 298 m 872 194 l 774 298 m 878 194 l
0.752941 0 0 rgb set-source
0.8 set-line-width
stroke+
reset-clip
n 907.5 194 262.5 3 rectangle
fill+
n 645 179 525 120 rectangle
0 0.447059 0.698039 rgb set-source
0.6 set-line-width
stroke+
% a
0.133333 g set-source
n 648 183 6 7 rectangle
fill+
% reverse
0.4 g set-source
n 662 183.347656 37.800781 6.300781 rectangle
fill+
% a name that…
0.133333 g set-source
n 14 359.800781 100.800781 8.398438 rectangle
fill+
0.337255 0.705882 0.913725 0.15 rgba set-source
n 382.5 304 262.5 120 rectangle
fill+
0.752941 0 0 0.25 rgba set-source
n 382.5 319 262.5 104 rectangle
fill+
clip+
n 276 423 m 380 319 l 282 423 m 386 319 l 288 423 m 392 319 l 294 423 m 398 319 l 300 423 m 404 319 l 306 423 m 410 319 l 312 423 m 416 319 l 318 423 m 422 319 l 324 423 m 428 319 l 330 423 m 434 319 l 336 423 m 440 319 l 342 423 m 446 319 l 348 423 m 452 319 l 354 423 m 458 319 l 360 423 m 464 319 l 366 423 m 470 319 l 372 423 m 476 319 l 378 423 m 482 319 l 384 423 m 488 319 l 390 423 m 494 319 l 396 423 m 500 319 l 402 423 m 506 319 l 408 423 m 512 319 l 414 423 m 518 319 l 420 423 m 524 319 l 426 423 m 530 319 l 432 423 m 536 319 l 438 423 m 542 319 l 444 423 m 548 319 l 450 423 m 554 319 l 456 423 m 560 319 l 462 423 m 566 319 l 468 423 m 572 319 l 474 423 m 578 319 l 480 423 m 584 319 l 486 423 m 590 319 l 492 423 m 596 319 l 498 423 m 602 319 l 504 423 m 608 319 l 510 423 m 614 319 l 516 423 m 620 319 l 522 423 m 626 319 l 528 423 m 632 319 l 534 423 m 638 319 l 540 423 m 644 319 l 546 423 m 650 319 l 552 423 m 656 319 l 558 423 m 662 319 l 564 423 m 668 319 l 570 423 m 674 319 l 576 423 m 680 319 l 582 423 m 686 319 l 588 423 m 692 319 l 594 423 m 698 319 l 600 423 m 704 319 l 606 423 m 710 319 l 612 423 m 716 319 l 618 423 m 722 319 l 624 423 m 728 319 l 630 423 m 734 319 l 636 423 m 740 319 l 642 423 m 746 319 l
0.752941 0 0 rgb set-source
0.8 set-line-width
stroke+
reset-clip
n 382.5 304 262.5 120 rectangle
0.6 set-line-width
stroke+
% missing: b
n 385.5 308 60 7 rectangle
fill+
0.337255 0.705882 0.913725 0.15 rgba set-source
n 907.5 304 262.5 120 rectangle
fill+
0.752941 0 0 0.25 rgba set-source
n 907.5 319 262.5 104 rectangle
fill+
clip+
n 798 423 m 902 319 l 804 423 m 908 319 l 810 423 m 914 319 l 816 423 m 920 319 l 822 423 m 926 319 l 828 423 m 932 319 l 834 423 m 938 319 l 840 423 m 944 319 l 846 423 m 950 319 l 852 423 m 956 319 l 858 423 m 962 319 l 864 423 m 968 319 l 870 423 m 974 319 l 876 423 m 980 319 l 882 423 m 986 319 l 888 423 m 992 319 l 894 423 m 998 319 l 900 423 m 1004 319 l 906 423 m 1010 319 l 912 423 m 1016 319 l 918 423 m 1022 319 l 924 423 m 1028 319 l 930 423 m 1034 319 l 936 423 m 1040 319 l 942 423 m 1046 319 l 948 423 m 1052 319 l 954 423 m 1058 319 l 960 423 m 1064 319 l 966 423 m 1070 319 l 972 423 m 1076 319 l 978 423 m 1082 319 l 984 423 m 1088 319 l 990 423 m 1094 319 l 996 423 m 1100 319 l 1002 423 m 1106 319 l 1008 423 m 1112 319 l 1014 423 m 1118 319 l 1020 423 m 1124 319 l 1026 423 m 1130 319 l 1032 423 m 1136 319 l 1038 423 m 1142 319 l 1044 423 m 1148 319 l 1050 423 m 1154 319 l 1056 423 m 1160 319 l 1062 423 m 1166 319 l 1068 423 m 1172 319 l 1074 423 m 1178 319 l 1080 423 m 1184 319 l 1086 423 m 1190 319 l 1092 423 m 1196 319 l 1098 423 m 1202 319 l 1104 423 m 1208 319 l 1110 423 m 1214 319 l 1116 423 m 1220 319 l 1122 423 m 1226 319 l 1128 423 m 1232 319 l 1134 423 m 1238 319 l 1140 423 m 1244 319 l 1146 423 m 1250 319 l 1152 423 m 1256 319 l 1158 423 m 1262 319 l 1164 423 m 1268 319 l
0.752941 0 0 rgb set-source
0.8 set-line-width
stroke+
reset-clip
n 907.5 304 262.5 120 rectangle
0.6 set-line-width
stroke+
% not playable: a
n 910.5 308 90 7 rectangle
fill+
% speed 2
0.4 g set-source
n 1008.5 308.347656 37.800781 6.300781 rectangle
fill+
% track 3
0.133333 g set-source
n 14 484.800781 50.398438 8.398438 rectangle
fill+
0.337255 0.705882 0.913725 0.15 rgba set-source
n 120 429 1050 58 rectangle
fill+
0.4 g set-source
stroke+
% silent: a
n 123 433 54 7 rectangle
fill+
% disabled
n 185 433.347656 43.199219 6.300781 rectangle
fill+
0.337255 0.705882 0.913725 0.15 rgba set-source
n 382.5 489 0.5 58 rectangle
fill+
% filled:
n 382.5 525 m 382.550781 525 l h 382.5 525 m
0.337255 0.705882 0.913725 rgb set-source
0.4 set-line-width
stroke+
0.337255 0.705882 0.913725 0.15 rgba set-source
n 645 489 13.125 58 rectangle
fill+
% filled:
n 645 525 m 658.125 525 l h 645 525 m
0.337255 0.705882 0.913725 rgb set-source
stroke+
n 645 489 13.125 58 rectangle
0 0.447059 0.698039 rgb set-source
0.6 set-line-width
stroke+
1 g set-source
n 120 554 1050 20 rectangle
fill+
% Tracks that are not drawn: 3
0.133333 g set-source
n 124 559.800781 201.601562 8.398438 rectangle
fill+
0.337255 0.705882 0.913725 rgb set-source
n
  120 610.5 52.5 0.398438 rectangle
  172.5 610.5 52.5 0.398438 rectangle
  225 610.5 52.5 0.398438 rectangle
  277.5 610.5 52.5 0.398438 rectangle
  330 610.5 52.5 0.398438 rectangle
  802.5 610.5 52.5 14.25 rectangle
  855 610.5 52.5 14.25 rectangle
  907.5 610.5 52.5 0.398438 rectangle
  960 610.5 52.5 0.398438 rectangle
  1012.5 610.5 52.5 0.398438 rectangle
  1065 610.5 52.5 0.398438 rectangle
  1117.5 610.5 52.5 0.398438 rectangle
fill+
0.752941 0 0 rgb set-source
n
  382.5 582 52.5 42.75 rectangle
  435 582 52.5 42.75 rectangle
  487.5 582 52.5 42.75 rectangle
  540 582 52.5 42.75 rectangle
  592.5 582 52.5 42.75 rectangle
  645 582 52.5 42.75 rectangle
  697.5 582 52.5 42.75 rectangle
  750 582 52.5 42.75 rectangle
fill+
n 382.5 578 262.5 4 rectangle
fill+
% output
0.133333 g set-source
n 14 586.300781 43.199219 8.398438 rectangle
fill+
% peak +3.5 dB
0.752941 0 0 rgb set-source
n 14 623.300781 72 7 rectangle
fill+
n 120 574 1050 66 rectangle
0.4 g set-source
stroke+
pop
