// SPDX-License-Identifier: MIT
#include "app/xml_store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QSaveFile>
#include <QXmlStreamWriter>
#include <algorithm>
#include <cerrno>
#include <utility>

#include "app/object_model.h"
#include "app/safe_xml.h"

namespace hollin {
namespace {

constexpr char kVersion[] = "1";

bool IsMissing(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

AppError ReadError(int code, const std::string& path, const QString& reason) {
  return {.domain = kStoreErrorDomain,
          .code = code,
          .description =
              DataStoreText::tr("The application data cannot be read (%1).").arg(PathName(path)),
          .failureReason = reason};
}

bool ReadValues(SafeXml& xml, const ObjectModel& model, StoredObject& object) {
  while (xml.NextChild("value")) {
    const QString attribute = xml.Attribute("attribute");
    if (!model.HasAttribute(object.entity, attribute)) return false;
    if (!object.values.emplace(attribute, xml.Attribute("text")).second) return false;
    xml.ExpectNoChild();
  }
  return true;
}

bool ReadObjects(SafeXml& xml, const ObjectModel& model, StoredObjects& objects) {
  if (!xml.NextChild("store") || xml.Attribute("version") != kVersion) return false;
  while (xml.NextChild("object")) {
    bool isNumber = false;
    const ObjectId id = xml.Attribute("id").toULongLong(&isNumber);
    const auto [object, isNew] = objects.try_emplace(id, StoredObject{xml.Attribute("entity")});
    if (!isNumber || !isNew || !model.HasEntity(object->second.entity)) return false;
    if (!ReadValues(xml, model, object->second)) return false;
  }
  return xml.EndsWell();
}

void WriteObject(QXmlStreamWriter& xml, ObjectId id, const StoredObject& object) {
  xml.writeStartElement("object");
  xml.writeAttribute("id", QString::number(id));
  xml.writeAttribute("entity", object.entity);
  for (const auto& [attribute, text] : object.values) {
    xml.writeEmptyElement("value");
    xml.writeAttribute("attribute", attribute);
    xml.writeAttribute("text", text);  // in an attribute, so that blanks and line ends stay
  }
  xml.writeEndElement();
}

QByteArray TextOf(const StoredObjects& objects) {
  QByteArray text;
  QXmlStreamWriter xml(&text);
  xml.setAutoFormatting(true);
  xml.writeStartDocument();
  xml.writeStartElement("store");
  xml.writeAttribute("version", kVersion);
  for (const auto& [id, object] : objects) WriteObject(xml, id, object);
  xml.writeEndDocument();
  return text;
}

// errno may have been lost on the way.
int LastError() { return errno != 0 ? errno : EIO; }

// 0, or errno.
int ReplaceFile(const std::string& path, const QByteArray& text) {
  if (static_cast<uint64_t>(text.size()) > kLargestXmlFile) return EFBIG;  // unreadable afterwards
  const QString name = PathName(path);
  if (QFile::encodeName(name).toStdString() != path) return EILSEQ;
  QSaveFile file(name);
  errno = 0;
  if (!file.open(QIODevice::WriteOnly)) return LastError();
  if (file.write(text) != text.size() || !file.flush()) return LastError();
  if (fsync(file.handle()) != 0 || !file.commit()) return LastError();
  return 0;
}

}  // namespace

bool ReadXmlStore(const std::string& path, const ObjectModel& model, StoredObjects& objects,
                  AppError& error) {
  objects.clear();
  if (IsMissing(path)) return true;
  SafeXml xml;
  if (!xml.Open(path)) {
    error = ReadError(kStoreUnreadable, path, DataStoreText::tr("The file cannot be opened."));
    return false;
  }
  StoredObjects read;
  if (!ReadObjects(xml, model, read)) {
    error = ReadError(kStoreDamaged, path, DataStoreText::tr("The file is damaged."));
    return false;
  }
  objects = std::move(read);
  return true;
}

bool FitsXml(const QString& text) {
  return text.isValidUtf16() && std::ranges::all_of(text, [](QChar character) {
           const char16_t code = character.unicode();
           return code >= u' ' ? code < 0xFFFE : code == u'\t' || code == u'\n' || code == u'\r';
         });
}

bool WriteXmlStore(const std::string& path, const StoredObjects& objects, AppError& error) {
  const int number = ReplaceFile(path, TextOf(objects));
  if (number == 0) return true;
  error = SystemError(
      number, DataStoreText::tr("The application data cannot be saved (%1).").arg(PathName(path)));
  return false;
}

}  // namespace hollin
