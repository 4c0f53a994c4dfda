#pragma once

#include <QWidget>

// One tab of the gallery per part of the toolkit; each page is made in its own file.
QWidget* makeRibbonPage(QWidget* parent);
QWidget* makeGridPage(QWidget* parent);
QWidget* makeCardPage(QWidget* parent);
QWidget* makePropertyGridPage(QWidget* parent);
QWidget* makeImageSliderPage(QWidget* parent);
