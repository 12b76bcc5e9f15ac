"""A Pyomo model solved by norvsolve: python3 knapsack.py, with norvsolve on the PATH."""
import pyomo.environ as pyo

weights = {"tent": 30, "stove": 12, "rope": 25, "bread": 8, "lamp": 5}
values = {"tent": 40, "stove": 30, "rope": 30, "bread": 25, "lamp": 12}

model = pyo.ConcreteModel()
model.take = pyo.Var(list(weights), domain=pyo.Binary)
model.value = pyo.Objective(expr=sum(values[i] * model.take[i] for i in weights), sense=pyo.maximize)
model.weight = pyo.Constraint(expr=sum(weights[i] * model.take[i] for i in weights) <= 50)

solver = pyo.SolverFactory("asl:norvsolve")
solver.options["timelim"] = 10
print(solver.solve(model).solver.termination_condition)
print([i for i in weights if pyo.value(model.take[i]) > 0.5])
