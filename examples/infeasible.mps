* A roster that cannot work
*
* A ward wants three nurses on the early shift, three on the day shift and three at night. It has
* eight, and nobody works twice. Columns are nurses per shift, whole people only. What it shows:
* a model whose infeasibility is proved.
NAME  ROSTER
ROWS
 N  nurses
 G  early-shift
 G  day-shift
 G  night-shift
 L  staff
COLUMNS
    people  'MARKER'  'INTORG'
    early   nurses  1   early-shift  1
    early   staff   1
    day     nurses  1   day-shift    1
    day     staff   1
    night   nurses  1   night-shift  1
    night   staff   1
    people  'MARKER'  'INTEND'
RHS
    RHS     early-shift  3   day-shift  3
    RHS     night-shift  3   staff      8
BOUNDS
 UP BND  early  8
 UP BND  day    8
 UP BND  night  8
ENDATA
