#include "qt_iconfactory.h"
#include "qt_widgetbuilder.h"

static_assert(sizeof(NS_QT::WidgetBuilder) > 0);
static_assert(QT_IconFactory::Tick == 1);
