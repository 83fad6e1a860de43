#include <engine/c_Distribution.h>

#include <iostream>

int main() {
  palvex::c_Distribution duration;
  duration.distType("Triangular");
  duration.param1 = 8;     // minimum, likely and maximum days
  duration.param2 = "10";  // a text that reads as a number will do; so will a worksheet's cell
  duration.param3 = 15;
  duration.utl = 14;  // nothing above 14 days

  std::string fault;
  if (!duration.ParamsOK(fault)) {
    std::cerr << fault << '\n';  // one sentence for people
    return 1;
  }
  try {
    std::cout << "12 days are enough with probability " << duration.cdf(12) << '\n'
              << "half of the draws stay below        " << duration.RandVal(0.5) << '\n';
  } catch (const palvex::RuntimeError& error) {
    std::cerr << error.what() << '\n';  // number, description and trace
    return 1;
  }
}
