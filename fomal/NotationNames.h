// The layout language is written in the object notation: its objects,
// arrays, readers and geometry go by their own names in layout code.
#pragma once

#include "notation/Notation.h"
#include "notation/NotationReaders.h"

namespace Fomal {

using notation::Array;
using notation::NumberSymbol;
using notation::Object;
using notation::parseArray;
using notation::parseObject;
using notation::PointF;
using notation::readBool;
using notation::readColor;
using notation::readInt;
using notation::readNumber;
using notation::readPoint;
using notation::readRect;
using notation::readString;
using notation::RectF;

}  // namespace Fomal
