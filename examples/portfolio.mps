* A careful portfolio
*
* Savings are spread over four funds (columns: shares of the whole) so that the expected return is
* at least 5 % and the outcome swings as little as possible. At most half may go into one fund.
* The objective is the variance x'Cx in squared percent; the file lists the upper triangle of 2 C,
* because QUADOBJ means x'Qx / 2. What it shows: a quadratic objective.
NAME  PORTFOLIO
ROWS
 N  variance
 E  all
 G  return
COLUMNS
    bonds      all  1   return  2
    houses     all  1   return  5
    industry   all  1   return  8
    gold       all  1   return  4
RHS
    RHS        all  1   return  5
BOUNDS
 UP BND  bonds     0.5
 UP BND  houses    0.5
 UP BND  industry  0.5
 UP BND  gold      0.5
QUADOBJ
    bonds      bonds      8
    bonds      houses     4
    bonds      gold      -2
    houses     houses    50
    houses     industry  36
    industry   industry 200
    industry   gold     -30
    gold       gold     128
ENDATA
