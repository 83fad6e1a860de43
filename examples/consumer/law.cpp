#include <palvex/palvex.h>

#include <iostream>
#include <random>

int main() {
  const auto days = palvex::Law::triangular(8, 10, 15).between({}, 14);  // nothing above 14
  std::cout << "more than 12 days with probability " << days.exceedance(12) << '\n'
            << "nine in ten take at most           " << days.quantile(0.9) << '\n';
  std::mt19937_64 bits(7);
  std::cout << "a draw                             " << days(bits) << '\n';
}
