// The toolkit in Qt Designer, as far as it goes without Designer's window. Where its headers
// are missing, nothing of this is built.

#include "forms.h"

#include <QFile>
#include <QPluginLoader>
#include <QUiLoader>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

#include <gtest/gtest.h>
#include <memory>

namespace {

TEST(Designer, LoadsAFormAsItIsCompiled) {
    QUiLoader loader;
    loader.clearPluginPaths();
    loader.addPluginPath(DESIGNER_FOLDER);
    QFile file(EVERY_WIDGET);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::unique_ptr<QWidget> form(loader.load(&file));
    ASSERT_TRUE(form != nullptr) << loader.errorString().toStdString();
    const Form compiled;
    for (const QWidget* const widget : compiled.widgets()) {
        const auto* const loaded = form->findChild<QWidget*>(widget->objectName());
        ASSERT_TRUE(loaded != nullptr) << widget->objectName().toStdString();
        EXPECT_STREQ(loaded->metaObject()->className(), widget->metaObject()->className());
        for (const QMetaProperty& property : propertiesOf(*widget))
            EXPECT_EQ(inWords(property, loaded->property(property.name())),
                      inWords(property, property.read(widget)))
                << property.name();
    }
}

TEST(Designer, OffersEachWithItsIcon) {
    QPluginLoader plugin(DESIGNER_FOLDER "/orvistrand_designer.so");
    auto* const offered =
        qobject_cast<QDesignerCustomWidgetCollectionInterface*>(plugin.instance());
    ASSERT_TRUE(offered != nullptr) << plugin.errorString().toStdString();
    for (QDesignerCustomWidgetInterface* const widget : offered->customWidgets()) {
        EXPECT_TRUE(widget->domXml().contains("class=\"" + widget->name() + '"'));
        EXPECT_TRUE(QFile::exists(TOOLKIT_FOLDER "/" + widget->includeFile()));
        EXPECT_FALSE(widget->icon().pixmap(24, 24).isNull()) << widget->name().toStdString();
    }
}

} // namespace
