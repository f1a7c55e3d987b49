import { render } from 'preact';

import '../styles';
import './gallery.css';
import { OtherExamples } from './OtherExamples';
import { RowExamples } from './RowExamples';

/** Every component in every state, for development and for the screenshots of the tests. */
const place = document.getElementById('app');
if (place !== null) {
    render(
        <>
            <h1>Components</h1>
            <RowExamples />
            <OtherExamples />
        </>,
        place,
    );
}
