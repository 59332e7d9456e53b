#pragma once

#include "PanelModel.h"
#include "PreviewModel.h"

#include <qqml.h>

// The types of the floor below under their names in QML. That floor knows nothing of QML.
namespace tessly::qml {

struct PanelModelType
{
    Q_GADGET
    QML_FOREIGN(tessly::PanelModel)
    QML_NAMED_ELEMENT(PanelModel)
    QML_UNCREATABLE("Made by the program.")
};

struct PanelFilterType
{
    Q_GADGET
    QML_FOREIGN(tessly::PanelFilter)
    QML_VALUE_TYPE(panelFilter)
};

struct PanelHintType
{
    Q_GADGET
    QML_FOREIGN(tessly::PanelHint)
    QML_VALUE_TYPE(panelHint)
};

struct PreviewModelType
{
    Q_GADGET
    QML_FOREIGN(tessly::PreviewModel)
    QML_NAMED_ELEMENT(PreviewModel)
    QML_UNCREATABLE("Made by the program.")
};

struct PreviewFileType
{
    Q_GADGET
    QML_FOREIGN(tessly::PreviewFile)
    QML_VALUE_TYPE(previewFile)
};

} // namespace tessly::qml
