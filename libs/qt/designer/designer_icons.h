#pragma once

#include <QIcon>

class QPainter;

namespace designer {

/// Draws what stands for a widget in Designer's lists, in a square of 24 units.
using Drawing = void (*)(QPainter& painter);

void drawButton(QPainter& painter);
void drawButtonStrip(QPainter& painter);
void drawSpinSlider(QPainter& painter);
void drawFractionSpinBox(QPainter& painter);
void drawSmartComboBox(QPainter& painter);
void drawStringComboBox(QPainter& painter);
void drawHyperlinkLabel(QPainter& painter);
void drawIconWidget(QPainter& painter);
void drawInfoButton(QPainter& painter);

/// The drawing as an icon, sharp on dense screens as well.
QIcon makeIcon(Drawing drawing);

} // namespace designer
