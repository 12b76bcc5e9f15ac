* What to carry up the mountain
*
* A hiker may carry 12 kg. Each thing is worth something on the way (points given after a long
* talk) and weighs something (kg). Take it or leave it. The tent and the bivouac bag do the same
* job: at most one of them. What it shows: yes-or-no columns (BV) and a maximum (OBJSENSE).
NAME  KNAPSACK
OBJSENSE
    MAX
ROWS
 N  worth
 L  weight
 L  one-shelter
COLUMNS
    tent       worth  28   weight  3.1
    tent       one-shelter  1
    bivouac    worth  17   weight  0.9
    bivouac    one-shelter  1
    stove      worth  14   weight  1.4
    food       worth  30   weight  4.2
    water      worth  26   weight  3.0
    rope       worth  11   weight  2.3
    camera     worth  12   weight  1.1
    book       worth   4   weight  0.6
    firstaid   worth   9   weight  0.5
RHS
    RHS        weight  12  one-shelter  1
BOUNDS
 BV pack  tent
 BV pack  bivouac
 BV pack  stove
 BV pack  food
 BV pack  water
 BV pack  rope
 BV pack  camera
 BV pack  book
 BV pack  firstaid
ENDATA
