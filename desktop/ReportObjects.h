// Hidden runs and pictures as inline objects of Qt's text documents.
#pragma once

#include <QObject>
#include <QSizeF>
#include <QTextFormat>
#include <QTextObjectInterface>

#include "desktop/PictureImages.h"
#include "desktop/RichTextDocument.h"

namespace tellurix {

inline constexpr char16_t ObjectCharacter = 0xFFFC;
inline constexpr int InlineObject = QTextFormat::UserObject + 1;

// What an inline object stands for, as properties of its character's format.
enum ObjectProperty {
  HiddenText = QTextFormat::UserProperty + 1,
  IsHidden,
  Picture,
  FirstFreeProperty,
};

// Measures and draws them. A hidden run takes no room.
class InlineObjects : public QObject, public QTextObjectInterface {
  Q_OBJECT
  Q_INTERFACES(QTextObjectInterface)

 public:
  explicit InlineObjects(QObject* parent) : QObject(parent) {}

  QSizeF paper;  // larger pictures are made smaller; invalid: no limit

  QSizeF intrinsicSize(QTextDocument* document, int position, const QTextFormat& format) override;
  void drawObject(QPainter* target, const QRectF& place, QTextDocument* document, int position,
                  const QTextFormat& format) override;

 private:
  bool DrawPicture(QPainter& target, const QRectF& place, const PicturePointer& picture);

  PictureImages images_;
};

}  // namespace tellurix
