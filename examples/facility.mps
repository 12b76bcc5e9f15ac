* Where to bake
*
* A baker supplies five shops and may open up to three bakehouses. Opening one costs money every
* month, and so does every delivery; a bakehouse bakes only so many trays a day, a shop gets all its
* trays from one bakehouse. Which ones to open, and who supplies whom?
*   open.S = 1: bakehouse S is open;  S.shop = 1: bakehouse S supplies the shop.
* What it shows: decisions with consequences, as integer columns between markers.
NAME  FACILITY
ROWS
 N  monthly-cost
 E  supply.north
 E  supply.east
 E  supply.south
 E  supply.west
 E  supply.market
 L  trays.mill
 L  trays.harbour
 L  trays.station
COLUMNS
    integers  'MARKER'  'INTORG'
    open.mill        monthly-cost  950  trays.mill  -60
    open.harbour     monthly-cost  1200  trays.harbour  -80
    open.station     monthly-cost  800  trays.station  -45
    mill.north       monthly-cost  90  trays.mill  18
    mill.north       supply.north  1
    mill.east        monthly-cost  160  trays.mill  22
    mill.east        supply.east  1
    mill.south       monthly-cost  210  trays.mill  15
    mill.south       supply.south  1
    mill.west        monthly-cost  120  trays.mill  20
    mill.west        supply.west  1
    mill.market      monthly-cost  140  trays.mill  25
    mill.market      supply.market  1
    harbour.north    monthly-cost  190  trays.harbour  18
    harbour.north    supply.north  1
    harbour.east     monthly-cost  130  trays.harbour  22
    harbour.east     supply.east  1
    harbour.south    monthly-cost  80  trays.harbour  15
    harbour.south    supply.south  1
    harbour.west     monthly-cost  170  trays.harbour  20
    harbour.west     supply.west  1
    harbour.market   monthly-cost  110  trays.harbour  25
    harbour.market   supply.market  1
    station.north    monthly-cost  150  trays.station  18
    station.north    supply.north  1
    station.east     monthly-cost  100  trays.station  22
    station.east     supply.east  1
    station.south    monthly-cost  170  trays.station  15
    station.south    supply.south  1
    station.west     monthly-cost  180  trays.station  20
    station.west     supply.west  1
    station.market   monthly-cost  95  trays.station  25
    station.market   supply.market  1
    integers  'MARKER'  'INTEND'
RHS
    RHS  supply.north  1
    RHS  supply.east  1
    RHS  supply.south  1
    RHS  supply.west  1
    RHS  supply.market  1
BOUNDS
 UP BND  open.mill  1
 UP BND  open.harbour  1
 UP BND  open.station  1
 UP BND  mill.north  1
 UP BND  mill.east  1
 UP BND  mill.south  1
 UP BND  mill.west  1
 UP BND  mill.market  1
 UP BND  harbour.north  1
 UP BND  harbour.east  1
 UP BND  harbour.south  1
 UP BND  harbour.west  1
 UP BND  harbour.market  1
 UP BND  station.north  1
 UP BND  station.east  1
 UP BND  station.south  1
 UP BND  station.west  1
 UP BND  station.market  1
ENDATA
