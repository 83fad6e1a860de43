#pragma once

#include <memory>

#include "hosts/terminal/Worksheet.h"
#include "simulation/Sheet.h"

namespace palvex::terminal {

/// A CSV file as the table of a simulation; what its references stand for is read once.
class CsvSheet : public simulation::Sheet {
 public:
  explicit CsvSheet(Worksheet sheet)
      : sheet_(std::make_shared<const Worksheet>(std::move(sheet))) {}

  [[nodiscard]] std::int32_t rows() const override { return sheet_->rows(); }
  [[nodiscard]] std::int32_t columns() const override { return sheet_->columns(); }
  [[nodiscard]] Variant at(std::int32_t row, std::int32_t column) const override {
    return sheet_->at({row, column});
  }
  [[nodiscard]] Reference refer(std::string_view text) const override;

 private:
  std::shared_ptr<const Worksheet> sheet_;
};

}  // namespace palvex::terminal
