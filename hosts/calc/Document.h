#pragma once

#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <filesystem>

namespace css = com::sun::star;

namespace palvex::calc {

using Document = css::uno::Reference<css::sheet::XSpreadsheetDocument>;

/// A document opened without a window, read-only and with its macros disabled; closed with the
/// object.
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

/// A temporary folder that no other user can read; removed with the object.
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

/// Stores a copy of a document as it is now. The open document keeps its name and its unsaved
/// changes.
void storeCopy(const Document& document, const std::filesystem::path& file);

/// Whether a document's structure, or a sheet, is protected from changes.
[[nodiscard]] bool isProtected(const css::uno::Reference<css::uno::XInterface>& object);

}  // namespace palvex::calc
