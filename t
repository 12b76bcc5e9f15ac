* solvetrace file t: ID = LocalSolver Instance = 
* fields are lineNum, seriesID, node, seconds, bestFound, bestBound
1, S, 0, 0, 0, na
2, E, 0, 0.00100017, 8, na
* solvetrace file closed
