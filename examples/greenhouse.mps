* A greenhouse through a day and a night
*
* The air in a greenhouse keeps 90 % of its warmth from hour to hour and takes 10 % of its degrees
* from outside. A stove warms it: every degree and hour costs more, the more is asked of it at once
* and the dearer the hour (price times square). Each hour's distance from 18 degrees counts squared.
* It starts at 12 degrees; t1 to t24 are the temperatures at the end of each hour, h1 to h24 the
* warming. QUADOBJ lists 2 price and 2, and -36 t and the constant 24 * 324 belong to the squares.
* What it shows: chains of equalities that define variables, which aggrvars=1 replaces.
NAME  GREENHOUSE
ROWS
 N  cost
 E  hour1
 E  hour2
 E  hour3
 E  hour4
 E  hour5
 E  hour6
 E  hour7
 E  hour8
 E  hour9
 E  hour10
 E  hour11
 E  hour12
 E  hour13
 E  hour14
 E  hour15
 E  hour16
 E  hour17
 E  hour18
 E  hour19
 E  hour20
 E  hour21
 E  hour22
 E  hour23
 E  hour24
COLUMNS
    t1    cost  -36   hour1  1
    t1    hour2  -0.9
    t2    cost  -36   hour2  1
    t2    hour3  -0.9
    t3    cost  -36   hour3  1
    t3    hour4  -0.9
    t4    cost  -36   hour4  1
    t4    hour5  -0.9
    t5    cost  -36   hour5  1
    t5    hour6  -0.9
    t6    cost  -36   hour6  1
    t6    hour7  -0.9
    t7    cost  -36   hour7  1
    t7    hour8  -0.9
    t8    cost  -36   hour8  1
    t8    hour9  -0.9
    t9    cost  -36   hour9  1
    t9    hour10  -0.9
    t10   cost  -36   hour10  1
    t10   hour11  -0.9
    t11   cost  -36   hour11  1
    t11   hour12  -0.9
    t12   cost  -36   hour12  1
    t12   hour13  -0.9
    t13   cost  -36   hour13  1
    t13   hour14  -0.9
    t14   cost  -36   hour14  1
    t14   hour15  -0.9
    t15   cost  -36   hour15  1
    t15   hour16  -0.9
    t16   cost  -36   hour16  1
    t16   hour17  -0.9
    t17   cost  -36   hour17  1
    t17   hour18  -0.9
    t18   cost  -36   hour18  1
    t18   hour19  -0.9
    t19   cost  -36   hour19  1
    t19   hour20  -0.9
    t20   cost  -36   hour20  1
    t20   hour21  -0.9
    t21   cost  -36   hour21  1
    t21   hour22  -0.9
    t22   cost  -36   hour22  1
    t22   hour23  -0.9
    t23   cost  -36   hour23  1
    t23   hour24  -0.9
    t24   cost  -36   hour24  1
    h1    hour1  -1
    h2    hour2  -1
    h3    hour3  -1
    h4    hour4  -1
    h5    hour5  -1
    h6    hour6  -1
    h7    hour7  -1
    h8    hour8  -1
    h9    hour9  -1
    h10   hour10  -1
    h11   hour11  -1
    h12   hour12  -1
    h13   hour13  -1
    h14   hour14  -1
    h15   hour15  -1
    h16   hour16  -1
    h17   hour17  -1
    h18   hour18  -1
    h19   hour19  -1
    h20   hour20  -1
    h21   hour21  -1
    h22   hour22  -1
    h23   hour23  -1
    h24   hour24  -1
RHS
    RHS   cost  -7776
    RHS   hour1  11.2
    RHS   hour2  0.3
    RHS   hour3  0.3
    RHS   hour4  0.2
    RHS   hour5  0.2
    RHS   hour6  0.1
    RHS   hour7  0.1
    RHS   hour8  0.2
    RHS   hour9  0.4
    RHS   hour10  0.6
    RHS   hour11  0.8
    RHS   hour12  1
    RHS   hour13  1.1
    RHS   hour14  1.2
    RHS   hour15  1.2
    RHS   hour16  1.1
    RHS   hour17  1
    RHS   hour18  0.8
    RHS   hour19  0.7
    RHS   hour20  0.6
    RHS   hour21  0.6
    RHS   hour22  0.5
    RHS   hour23  0.5
    RHS   hour24  0.4
BOUNDS
 UP BND  t1  40
 UP BND  t2  40
 UP BND  t3  40
 UP BND  t4  40
 UP BND  t5  40
 UP BND  t6  40
 UP BND  t7  40
 UP BND  t8  40
 UP BND  t9  40
 UP BND  t10  40
 UP BND  t11  40
 UP BND  t12  40
 UP BND  t13  40
 UP BND  t14  40
 UP BND  t15  40
 UP BND  t16  40
 UP BND  t17  40
 UP BND  t18  40
 UP BND  t19  40
 UP BND  t20  40
 UP BND  t21  40
 UP BND  t22  40
 UP BND  t23  40
 UP BND  t24  40
 UP BND  h1  20
 UP BND  h2  20
 UP BND  h3  20
 UP BND  h4  20
 UP BND  h5  20
 UP BND  h6  20
 UP BND  h7  20
 UP BND  h8  20
 UP BND  h9  20
 UP BND  h10  20
 UP BND  h11  20
 UP BND  h12  20
 UP BND  h13  20
 UP BND  h14  20
 UP BND  h15  20
 UP BND  h16  20
 UP BND  h17  20
 UP BND  h18  20
 UP BND  h19  20
 UP BND  h20  20
 UP BND  h21  20
 UP BND  h22  20
 UP BND  h23  20
 UP BND  h24  20
QUADOBJ
    t1  t1  2
    t2  t2  2
    t3  t3  2
    t4  t4  2
    t5  t5  2
    t6  t6  2
    t7  t7  2
    t8  t8  2
    t9  t9  2
    t10  t10  2
    t11  t11  2
    t12  t12  2
    t13  t13  2
    t14  t14  2
    t15  t15  2
    t16  t16  2
    t17  t17  2
    t18  t18  2
    t19  t19  2
    t20  t20  2
    t21  t21  2
    t22  t22  2
    t23  t23  2
    t24  t24  2
    h1  h1  2
    h2  h2  2
    h3  h3  2
    h4  h4  2
    h5  h5  2
    h6  h6  4
    h7  h7  6
    h8  h8  8
    h9  h9  8
    h10  h10  6
    h11  h11  4
    h12  h12  4
    h13  h13  4
    h14  h14  4
    h15  h15  4
    h16  h16  4
    h17  h17  6
    h18  h18  8
    h19  h19  10
    h20  h20  10
    h21  h21  8
    h22  h22  6
    h23  h23  4
    h24  h24  2
ENDATA
