-- Schema of a collection file. Each statement is stored by SQLite as written here,
-- from CREATE up to the closing semicolon, so keep the text of the statements stable.

CREATE TABLE tblCoins (
    ID INTEGER PRIMARY KEY AUTOINCREMENT UNIQUE,
    Name VARCHAR (500) NOT NULL,
    Metal INTEGER NOT NULL,
    ObverseDesc VARCHAR (1000),
    ReverseDesc VARCHAR (1000),
    Series VARCHAR (300),
    Year INTEGER,
    WeightG DOUBLE NOT NULL,
    MintID INTEGER,
    CoinType INTEGER NOT NULL DEFAULT (0),
    FaceValue DOUBLE,
    FaceValueCurrency VARCHAR (3),
    Purity VARCHAR (30),
    Thickness DOUBLE,
    Diameter DOUBLE,
    Width DOUBLE,
    Height DOUBLE,
    Edge VARCHAR (100),
    MintMark BOOLEAN DEFAULT (0),
    Country VARCHAR (2),
    Mintage INTEGER,
    Artist VARCHAR (1000),
    Description TEXT,
    ThumbFront BLOB,
    ThumbBack BLOB,
    PhotoFront BLOB,
    PhotoBack BLOB,
    PhotoSide BLOB,
    PhotoInBox BLOB,
    ExpectedPremium DOUBLE,
    Rating DOUBLE,
    Rare BOOLEAN,
    Condition VARCHAR (500),
    Status VARCHAR (500),
    Owner VARCHAR (500),
    Packaging VARCHAR (500),
    Location VARCHAR (500),
    Grade VARCHAR (500),
    GradeService VARCHAR (500),
    SerialNumbers TEXT,
    Qty INTEGER,
    Price DOUBLE,
    PurchaseDate DATE,
    Store VARCHAR (500),
    Custom1 NONE NULL,
    Custom2 NONE NULL,
    Custom3 NONE NULL,
    Custom4 NONE NULL,
    Custom5 NONE NULL,
    Custom6 NONE NULL,
    Custom7 NONE NULL,
    Custom8 NONE NULL,
    Custom9 NONE NULL,
    Custom10 NONE NULL
);

CREATE TABLE tblMints (
    ID INTEGER PRIMARY KEY AUTOINCREMENT,
    Name VARCHAR (300) NOT NULL,
    Logo BLOB,
    Country VARCHAR (2),
    URL VARCHAR (5000),
    IsPrivate BOOLEAN,
    Description TEXT
);

CREATE TABLE tblVer (
    Version VARCHAR (20)
);

CREATE VIEW vCoinsStats AS
    SELECT C.*,
           C.WeightG / 31.1035 AS WeightOZ,
           strftime('%Y', PurchaseDate) AS PurchaseYear,
           strftime('%Y-%m', PurchaseDate) AS PurchaseYearMonth
      FROM tblCoins C;
