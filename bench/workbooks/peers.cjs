// The work of floor.cpp by the npm package xlsx: the same words as there.
"use strict";
const xlsx = require("xlsx");

const [work, path, target, rows] = process.argv.slice(2);
const book = xlsx.readFile(path);

if (work === "read") {
  let numbers = 0;
  let letters = 0;
  for (const name of book.SheetNames) {
    for (const [address, cell] of Object.entries(book.Sheets[name])) {
      if (address.startsWith("!")) continue;
      if (cell.t === "n") numbers += 1;
      if (cell.t === "s") letters += cell.v.length;
    }
  }
  console.log(numbers, letters);
} else {
  const sheet = book.Sheets[book.SheetNames[0]];
  const cells = [];
  for (let row = 0; row < Number(rows); ++row) {
    const one = [];
    for (let column = 0; column < 10; ++column) {
      one.push(column % 3 === 0 ? `text ${row} ${column}` : row * 1.25 + column);
    }
    cells.push(one);
  }
  xlsx.utils.sheet_add_aoa(sheet, cells, { origin: "A2" });
  xlsx.writeFile(book, target, { bookType: "biff8" });
}
