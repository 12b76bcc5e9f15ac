* A breakfast drink
*
* A small press fills 1000 litres of a breakfast drink. It mixes orange, apple and carrot juice
* with water so that the drink costs as little as possible and still keeps its promises:
*   at least 200 mg of vitamin C and at most 70 g of sugar per litre, at least 80 % juice.
* All columns are litres. What it shows: a plain linear model.
NAME          BLEND
ROWS
 N  COST
 E  VOLUME
 G  VITAMINC
 L  SUGAR
 G  JUICE
COLUMNS
    ORANGE    COST             1.80   VOLUME              1
    ORANGE    VITAMINC          450   SUGAR              85
    ORANGE    JUICE               1
    APPLE     COST             0.90   VOLUME              1
    APPLE     VITAMINC           30   SUGAR             105
    APPLE     JUICE               1
    CARROT    COST             1.10   VOLUME              1
    CARROT    VITAMINC           60   SUGAR              45
    CARROT    JUICE               1
    WATER     COST             0.02   VOLUME              1
RHS
    PROMISE   VOLUME           1000   VITAMINC       200000
    PROMISE   SUGAR           70000   JUICE             800
BOUNDS
 UP TANK      ORANGE           1000
 UP TANK      APPLE            1000
 UP TANK      CARROT           1000
 UP TANK      WATER            1000
ENDATA
