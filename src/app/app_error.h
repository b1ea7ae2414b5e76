// SPDX-License-Identifier: MIT
// What went wrong with the data store, as it is presented to the user. docs/data-store.md lists the
// domains and codes.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <string>

namespace hollin {

inline constexpr char kDelegateErrorDomain[] = "YOUR_ERROR_DOMAIN";
inline constexpr char kFileErrorDomain[] = "com.tovari.Hollin.files";
inline constexpr char kStoreErrorDomain[] = "com.tovari.Hollin.store";
inline constexpr char kSystemErrorDomain[] = "POSIX";  // the code is errno

// Of the delegate.
inline constexpr int kFileInFoldersPlace = 101;
inline constexpr int kStoreNotInitialized = 9999;
// Of files.
inline constexpr int kNoSuchFile = 260;
// Of the store.
inline constexpr int kStoreUnreadable = 1;
inline constexpr int kStoreDamaged = 2;

struct AppError {
  QString domain = {};
  int code = 0;
  QString description = {};
  QString failureReason = {};

  [[nodiscard]] bool Is(const char* otherDomain, int otherCode) const {
    return domain == otherDomain && code == otherCode;
  }
};

// The words of these errors, as translators know them.
struct DataStoreText {
  Q_DECLARE_TR_FUNCTIONS(DataStore)
};

// The name by which Qt opens a path, which is the one that people read too.
[[nodiscard]] QString PathName(const std::string& path);

// The error that errno stands for.
[[nodiscard]] AppError SystemError(int number, const QString& description);

}  // namespace hollin
