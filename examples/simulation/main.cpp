#include <palvex/simulation.h>

#include <iostream>

int main() {
  using namespace palvex;
  simulation::Model model;
  model.add("Build", Law::pert(60, 75, 120), 1, "days");
  model.add("Redesign", Law::lognormalMean(15, 10), 0.25, "days");
  model.add(
      {.name = "Test", .type = "Triangular", .parameters = {10.0, 15.0, model.above("Build")}});
  model.addFormula("Duration", "[Build] + [Redesign] + [Test]", "days");

  simulation::Settings settings;
  settings.trials = 1'000'000;
  const simulation::Results results = simulation::run(model, settings);
  for (const auto& [percent, value, low, high] : results.results[0].percentiles) {
    std::cout << "P" << percent << "  " << value << "  (" << low << " to " << high << ")\n";
  }
}
