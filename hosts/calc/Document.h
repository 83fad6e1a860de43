#pragma once

#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <filesystem>

namespace css = com::sun::star;

namespace palvex::calc {

using Document = css::uno::Reference<css::sheet::XSpreadsheetDocument>;

/// A document that nobody looks at: opened without a window, read-only and without its macros, and
/// closed at the end.
class HiddenDocument {
 public:
  /// @throws Fault when it is no spreadsheet
  explicit HiddenDocument(const std::filesystem::path& file);
  HiddenDocument(const HiddenDocument&) = delete;
  HiddenDocument& operator=(const HiddenDocument&) = delete;
  ~HiddenDocument();

  [[nodiscard]] const Document& get() const { return document_; }

 private:
  Document document_;
};

/// A folder of one's own for as long as the object lives, which nobody else can read.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// Stores a document as it is now into a file, which its window does not notice.
void storeCopy(const Document& document, const std::filesystem::path& file);

/// Whether a document's structure, or a sheet, is protected from changes.
[[nodiscard]] bool isProtected(const css::uno::Reference<css::uno::XInterface>& object);

}  // namespace palvex::calc
